#pragma once

#include <string>
#include <vector>

#include "CVobject.h"

/// The names in one directory, read anew by each call, in the order the system gives them.
///
/// An entry that vanishes while it is being listed is left out. Throws CVioException "Read Directory Failed"
/// when the directory cannot be read, "File Get State Failed" when the status of an entry cannot.
class CVioDirectory : public CVobject {
public:
    explicit CVioDirectory(std::string path);

    /// All names but "." and "..".
    std::vector<std::string> List() const;
    /// The same without the entry that CreateLockFile makes.
    std::vector<std::string> ListWithoutLock() const;

    const std::string& GetPath() const { return path_; }

private:
    std::string path_;
};
