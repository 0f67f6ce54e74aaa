#include "tools/cvlogs/LikelyMistakes.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "syslib/CVsysEventLogModNames.h"
#include "syslib/IniReaderWriter.h"
#include "syslib/LogLevel.h"
#include "syslib/LogSettings.h"
#include "syslib/LogWriters.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

using Warnings = std::vector<std::string>;
using Section = IniReaderWriter::Section;

template <class List>
bool Lists(const List& list, std::string_view name) {
    return std::any_of(std::begin(list), std::end(list),
                       [&](const char* entry) { return EqualNoCase(entry, name); });
}

bool NamesNoLevel(const std::string& value) {
    return ParseLogLevel(value, UnknownLevel::None) == LogLevel::None;
}

bool NamesNoWriter(const std::string& value) {
    return !EqualNoCase(value, "common") && !IsLogWriter(value);
}

bool MeansNo(const std::string& value) {
    constexpr const char* kWords[] = {"0", "no", "off", "false"};
    return Lists(kWords, value);
}

bool IsZero(const std::string& value) {
    return std::strtoll(value.c_str(), nullptr, 10) == 0;
}

bool IsNotZero(const std::string& value) {
    return !IsZero(value);
}

bool IsRelative(const std::string& value) {
    return !value.starts_with('/');
}

constexpr const char* kDependsOnStart = "is relative to the directory that a program is started in";
constexpr const char* kKeepsOldNumber = "is not taken; what holds is the number before it, or the default";

constexpr struct {
    const char* key;
    bool (*isLikelyMistake)(const std::string& value);
    const char* consequence;
} kValueChecks[] = {
    {"level", NamesNoLevel, "names no level; warn is taken"},
    {"writer", NamesNoWriter, "names no writer; nothing is logged"},
    {"autoAppend", MeansNo, "switches it on, as every value does"},
    {"truncate", IsNotZero,
     "empties the database whenever a program starts, and the front end starts for each request"},
    {"numFiles", IsZero, kKeepsOldNumber},
    {"bytesPerFiles", IsZero, kKeepsOldNumber},
    {"filePath", IsRelative, kDependsOnStart},
    {"dbfilename", IsRelative, kDependsOnStart},
    {"filename", IsRelative, kDependsOnStart},
};

void CheckKey(const IniLine& entry, const std::string& where, Warnings& warnings) {
    if (IsSpace(entry.text.back())) {
        warnings.push_back(where + "the key \"" + entry.text + "\" ends in a blank; no program finds it");
    } else if (!IsLogKey(entry.text)) {
        warnings.push_back(where + "no program knows the key \"" + entry.text + "\"");
    }
}

void CheckValue(const IniLine& entry, const std::string& where, Warnings& warnings) {
    for (const auto& check : kValueChecks) {
        if (!EqualNoCase(entry.text, check.key) || !check.isLikelyMistake(entry.value)) continue;
        warnings.push_back(where + entry.text + "=" + entry.value + " " + check.consequence);
    }
}

void CheckHeader(IniReaderWriter& ini, Section section, Warnings& warnings) {
    const std::string& header = section->text;
    if (!header.ends_with(']')) {
        warnings.push_back(header + " lacks its \"]\"; no program finds the section");
        return;
    }
    if (ini.FindSection(header) != section) {
        warnings.push_back(header + " stands there twice; programs find the first one only");
    }
    const std::string name = header.substr(1, header.size() - 2);
    constexpr const char* kShared[] = {"main", "common",
                                       "Deliveries"};  // the journal is no module of its own
    if (!Lists(kShared, name) && !Lists(CVsysEventLogModNames, name)) {
        warnings.push_back(header + " is no module of the system");
    }
}

void CheckEntries(IniReaderWriter& ini, Section section, Warnings& warnings) {
    const std::string where = section->text + " ";
    for (const IniLine* entry : ini.Entries(section)) {
        CheckKey(*entry, where, warnings);
        if (ini.FindKey(section, entry->text) != &entry->value) {
            warnings.push_back(where + "has the key \"" + entry->text + "\" more than once");
        }
        CheckValue(*entry, where, warnings);
    }
}

void CheckLineLengths(const std::string& path, Warnings& warnings) {
    std::ifstream file(path);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.size() + 1 <= IniReaderWriter::kLongestLine) continue;
        warnings.push_back("line " + std::to_string(number) +
                           " is longer than 511 characters; it breaks in two");
    }
}

}  // namespace

std::vector<std::string> FindLikelyMistakes(IniReaderWriter& ini, const std::string& path) {
    Warnings warnings;
    CheckLineLengths(path, warnings);
    for (const Section section : ini.Sections()) {
        CheckHeader(ini, section, warnings);
        CheckEntries(ini, section, warnings);
    }
    return warnings;
}

}  // namespace quorbel
