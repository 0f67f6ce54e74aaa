#include "tools/cvlogs/EntryOutput.h"

#include <vector>

#include "syslib/LogLevel.h"
#include "tools/operator/Output.h"
#include "tools/operator/Text.h"

namespace quorbel {

// A number is printed as it is, and stays empty where there is none.
struct EntryPrinter::Column {
    const char* name;
    std::string value;
    bool isNumber = false;
};

namespace {

constexpr struct {
    LogLevel level;
    const char* colour;
} kColours[] = {
    {LogLevel::Trace, "2"},  {LogLevel::Debug, "2"},       {LogLevel::Warn, "33"},
    {LogLevel::Error, "31"}, {LogLevel::Critical, "1;31"}, {LogLevel::Fatal, "1;31"},
};

std::string CountLine(const LogEntry& alike, std::int64_t count) {
    constexpr std::size_t kWidth = 7;
    std::string line = std::to_string(count);
    if (line.size() < kWidth) line.insert(0, kWidth - line.size(), ' ');
    const std::string_view message = alike.message;
    line.append(" ").append(alike.time).append(" ");
    line.append(LogLevelTag(static_cast<unsigned>(alike.level))).append(" ");
    return line.append(message.substr(0, message.find_last_not_of("\r\n") + 1));
}

}  // namespace

const char* ColourOfLevel(int level) {
    for (const auto& row : kColours) {
        if (static_cast<int>(row.level) == level) return row.colour;
    }
    return "";
}

template <class Columns>
void EntryPrinter::PrintColumns(const Columns& columns) {
    if (format_ == EntryFormat::Json) {
        std::string object;
        for (const Column& column : columns) {
            object += object.empty() ? "{" : ",";
            const std::string number = column.value.empty() ? "null" : column.value;
            object += JsonString(column.name) + ":" + (column.isNumber ? number : JsonString(column.value));
        }
        return PrintLine(object + "}");
    }
    std::vector<std::string> names;
    std::vector<std::string> fields;
    for (const Column& column : columns) {
        names.emplace_back(column.name);
        fields.push_back(TsvField(column.value));
    }
    if (!headed_) PrintFields(names);
    headed_ = true;
    PrintFields(fields);
}

void EntryPrinter::Print(const LogEntry& entry) {
    if (format_ == EntryFormat::Lines) return PrintLine(entry.text, ColourOfLevel(entry.level));
    const std::string_view module = subModules_ ? SubModuleOf(entry.module) : entry.module;
    PrintColumns(std::vector<Column>{
        {"id", entry.id ? std::to_string(*entry.id) : "", true},
        {"module", std::string(module)},
        {"timestamp", entry.time.empty() ? "" : std::to_string(entry.timestamp), true},
        {"level", std::to_string(entry.level), true},
        {"message", std::string(entry.message)},
        {"line", std::to_string(entry.line), true},
        {"srcfile", std::string(entry.sourceFile)},
        {"tempcol", std::string(entry.time)},
    });
}

void EntryPrinter::PrintCount(const LogEntry& alike, std::int64_t count) {
    if (format_ == EntryFormat::Lines) return PrintLine(CountLine(alike, count), ColourOfLevel(alike.level));
    PrintColumns(std::vector<Column>{
        {"entry_time", std::string(alike.time)},
        {"message", std::string(alike.message)},
        {"level", std::to_string(alike.level), true},
        {"records", std::to_string(count), true},
    });
}

}  // namespace quorbel
