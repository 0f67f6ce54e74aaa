#pragma once

#include <optional>
#include <string>

#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tools/cvlogs/LogEntry.h"

namespace quorbel {

/// Reads a module's entries from a log database, a thousand at a time, in the order they were written in.
/// Failures are CVDBexceptions.
class DatabaseSource : public LogSource {
public:
    /// The module must have its table. `like` is a pattern of SQL for the messages; empty for all.
    DatabaseSource(const std::string& path, std::string module, std::string like);

    bool Next(LogEntry& entry) override;

private:
    bool ReadRows();
    std::string_view Cell(int column) const;

    CVSQLite3Database database_;
    const std::string module_;
    const std::string like_;
    std::string table_;
    CVSQLite3ResultSet rows_;
    int row_ = 0;
    std::int64_t lastId_ = 0;
    std::string text_;
    std::int64_t highestId_ = 0;
};

}  // namespace quorbel
