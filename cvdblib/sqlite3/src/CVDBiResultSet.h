#pragma once

/// What a database statement brought back: the rows of a select, as text, or the number of rows an update
/// changed.
///
/// All texts belong to the result set and live as long as it holds this result.
class CVDBiResultSet {
public:
    virtual ~CVDBiResultSet() = default;

    virtual int GetRowCount() const = 0;
    /// 0 as well when a select found no row.
    virtual int GetColumnCount() const = 0;
    /// Null outside the table.
    virtual const char* GetColumnName(int column) const = 0;
    /// Null for an SQL NULL and outside the table.
    virtual const char* GetCell(int row, int column) const = 0;

    virtual int GetAffectedRows() const = 0;
};
