#pragma once

#include <memory>

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

/// A result as SQLite hands it out: one block of texts, the column names first, freed with the object.
class CVSQLite3ResultSet : public CVDBiResultSet {
public:
    int GetRowCount() const override { return rows_; }
    int GetColumnCount() const override { return columns_; }
    const char* GetColumnName(int column) const override;
    const char* GetCell(int row, int column) const override;
    int GetAffectedRows() const override { return affectedRows_; }

    /// Takes over what sqlite3_get_table gave, and frees what was held before.
    void TakeTable(char** table, int rows, int columns);
    void SetAffectedRows(int rows) { affectedRows_ = rows; }

private:
    struct FreeTable {
        void operator()(char** table) const noexcept;
    };

    std::unique_ptr<char*, FreeTable> table_;
    int rows_ = 0;
    int columns_ = 0;
    int affectedRows_ = 0;
};
