#include "syslib/CVIniReaderWriterEx.h"

using namespace quorbel;

bool CVIniReaderWriterEx::load() {
    return LoadFrom(file_, nullptr);
}

bool CVIniReaderWriterEx::save(const std::string& otherPath) {
    return otherPath.empty() ? SaveTo(file_, nullptr) : IniReaderWriter::save(otherPath);
}

bool CVIniReaderWriterEx::Open() {
    return Try([this] { file_.Open("r+"); });
}

bool CVIniReaderWriterEx::Create() {
    return Try([this] { file_.Open("w+"); });
}

bool CVIniReaderWriterEx::CreateAndOpen() {
    return Try([this] {
        file_.Open("a+");
        file_.Close();
        file_.Open("r+");
    });
}

bool CVIniReaderWriterEx::LockUntilClose() {
    const bool locked = Try([this] { file_.Lock('w', false); });
    if (!locked) file_.Unlock();
    return locked;
}
