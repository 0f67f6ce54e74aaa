// Feeds arbitrary directory files: reading one never fails, and what was written once is read the same way ever after.

#include <cstring>

#include "fuzz/FuzzSupport.h"
#include "util/BoundedText.h"
#include "util/SpoolDirectories.h"

using namespace quorbel;

namespace {

bool EndsInside(const DirectoryTable& table) {
    for (const auto& path : table) {
        if (std::memchr(path, 0, sizeof path) == nullptr) return false;
    }
    return true;
}

/// Reads the file and writes it again; what it then holds.
std::string Rewritten(const FuzzFolder& folder) {
    DirectoryTable table{};
    LoadDirectoryConfig("dir", table);
    Require(EndsInside(table));
    for (int i = 0; i < g_nQueueDirectory; ++i) {
        Require(std::memchr(g_pQueueDirectory[i].name, 0, sizeof g_pQueueDirectory[i].name) != nullptr);
        Require(std::memchr(g_pQueueDirectory[i].path, 0, sizeof g_pQueueDirectory[i].path) != nullptr);
    }
    SaveDirectoryConfig("dir", table);
    return folder.Read("dir");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    CopyText(g_strConfigDir, folder.Path());
    folder.Write("dir", Text(data, size));
    Rewritten(folder);
    Rewritten(folder);
    return 0;
}
