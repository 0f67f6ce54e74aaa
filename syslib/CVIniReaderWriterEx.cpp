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
