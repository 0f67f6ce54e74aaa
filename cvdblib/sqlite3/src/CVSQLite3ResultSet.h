#pragma once

#include <memory>

#include "cvdblib/sqlite3/src/CVDBiResultSet.h"

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
