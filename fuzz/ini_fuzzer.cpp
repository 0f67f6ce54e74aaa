// Feeds arbitrary INI files: what was read and written once is read and written the same way ever after, long lines
// aside, which lose a byte each time (kept for compatibility).

#include "fuzz/FuzzSupport.h"
#include "syslib/IniReaderWriter.h"

using namespace quorbel;

namespace {

/// Reads `from`, changes what is asked for, writes `to`.
void Rewrite(const FuzzFolder& folder, const std::string& from, const std::string& to, bool isChanged) {
    IniReaderWriter ini(folder / from);
    Require(ini.load());
    for (const auto section : ini.Sections()) {
        Require(section->text.starts_with('['));
        for (const IniLine* entry : ini.Entries(section)) {
            Require(!entry->text.empty() && !entry->value.empty());
            Require(ini.FindKey(section, entry->text) != nullptr);
        }
    }
    if (isChanged) ini.key(ini.section("[added]"), "key") = "value";
    Require(ini.save(folder / to));
}

bool HasLongLine(const std::string& text) {
    constexpr std::size_t kLong = 500;
    std::size_t from = 0;
    for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n', from)) {
        if (end - from > kLong) return true;
        from = end + 1;
    }
    return text.size() - from > kLong;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    folder.Write("first", Text(data, size));
    Rewrite(folder, "first", "second", true);
    Rewrite(folder, "second", "third", false);
    Rewrite(folder, "third", "fourth", false);
    if (!HasLongLine(Text(data, size))) Require(folder.Read("third") == folder.Read("fourth"));
    IniReaderWriter ini(folder / "fourth");
    Require(ini.load());
    Require(ini.key(ini.section("[added]"), "key") == "value" ||
            Text(data, size).find("key") != std::string::npos);
    return 0;
}
