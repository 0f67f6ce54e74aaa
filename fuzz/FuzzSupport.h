#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quorbel {

/// Ends the run, and so keeps the input, when it does not hold.
inline void Require(bool holds) {
    if (!holds) std::abort();
}

inline std::string Text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// A folder for the files of one fuzzer: in QUORBEL_FUZZ_FOLDER, which script/fuzz makes and removes, since a fuzzer that
/// found something removes nothing; without it in memory.
class FuzzFolder {
public:
    FuzzFolder() {
        const char* parent = std::getenv("QUORBEL_FUZZ_FOLDER");
        path_ = std::string(parent == nullptr ? "/dev/shm" : parent) + "/quorbel-fuzz-XXXXXX";
        Require(mkdtemp(path_.data()) != nullptr);
    }
    ~FuzzFolder() { std::filesystem::remove_all(path_); }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    const std::string& Path() const { return path_; }
    void Write(const std::string& name, const std::string& content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(*this / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

}  // namespace quorbel
