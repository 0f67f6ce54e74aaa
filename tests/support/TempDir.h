#pragma once

#include <string>
#include <vector>

namespace quorbel {

/// A directory of its own for one test, removed with everything in it at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();

    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

    /// Writes a file below the directory, creating its folders; returns its path.
    std::string Write(const std::string& name, const std::string& content) const;
    /// The names in it, sorted.
    std::vector<std::string> Names() const;

private:
    std::string path_;
};

/// The whole content of a file; empty when it cannot be read.
std::string ReadFile(const std::string& path);

}  // namespace quorbel
