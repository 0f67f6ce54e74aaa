#pragma once

#include <string>

namespace quorbel {

// Looks at a database file without opening it: closing a second descriptor would drop SQLite's locks on it.
// SQLite itself answers a hopeless path with a code that counts as busy, so CVSQLite3Database spends 25 s on
// it; who cannot wait asks here first.

/// Whether `path` is a regular file that this process may read.
bool IsReadableDatabase(const std::string& path);

/// Whether SQLite could write a database at `path`: the directory takes new files (the journals lie beside
/// the database), and what is there already is a regular file that may be read and written.
bool IsWritableDatabase(const std::string& path);

}  // namespace quorbel
