#pragma once

#include <functional>
#include <string>
#include <string_view>

class CVDBiResultSet;

namespace quorbel {

/// One row of a query's result, by the names of its columns.
class EntryRow {
public:
    EntryRow(const CVDBiResultSet& rows, int row) : rows_(rows), row_(row) {}

    /// Empty for an SQL NULL and for a column that the result does not have.
    std::string Text(std::string_view column) const;
    /// The level's tag as in a log file, "[INFO]".
    std::string LevelTag() const;
    /// The message without line ends at its end.
    std::string Message() const;

private:
    const CVDBiResultSet& rows_;
    const int row_;
};

using EntryToLine = std::function<std::string(const EntryRow&)>;

enum class EntryFormat { Lines, Json, Tsv };

/// Prints every row: as the line that `toLine` makes of it, as one JSON object, or as fields between tabs
/// below a line of the columns' names. Columns that only fill a place are left out of the last two.
void PrintEntries(const CVDBiResultSet& rows, EntryFormat format, const EntryToLine& toLine);

}  // namespace quorbel
