#pragma once

#include <string>
#include <vector>

namespace quorbel {

/// How this program was started, so that it can start once more in the same process: what lies in its file by then.
class ProgramStart {
public:
    /// To be made before anything changes the directory or the title of the process.
    explicit ProgramStart(char** argv);

    /// False when the program's file is not known.
    bool IsKnown() const { return !file_.empty(); }
    /// Replaces the running program. Returns only when that is not possible.
    void Repeat();
    /// The same, and hands the listening socket over, which must be the one that this program was handed.
    void RepeatWith(int listening);

private:
    std::string file_, directory_;
    std::vector<std::string> words_;
};

}  // namespace quorbel
