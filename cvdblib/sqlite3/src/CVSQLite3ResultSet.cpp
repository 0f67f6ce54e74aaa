#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"

#include <sqlite3.h>

#include <cstddef>

void CVSQLite3ResultSet::FreeTable::operator()(char** table) const noexcept {
    sqlite3_free_table(table);
}

void CVSQLite3ResultSet::TakeTable(char** table, int rows, int columns) {
    table_.reset(table);
    rows_ = rows;
    columns_ = columns;
}

const char* CVSQLite3ResultSet::GetColumnName(int column) const {
    if (column < 0 || column >= columns_) return nullptr;
    return table_.get()[column];
}

const char* CVSQLite3ResultSet::GetCell(int row, int column) const {
    if (row < 0 || row >= rows_ || column < 0 || column >= columns_) return nullptr;
    const auto line = static_cast<std::size_t>(row) + 1;  // the column names are the first line of the block
    return table_.get()[line * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column)];
}
