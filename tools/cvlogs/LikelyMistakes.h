#pragma once

#include <string>
#include <vector>

class IniReaderWriter;

namespace quorbel {

/// What in a logging configuration is legal and hardly meant: keys that no program finds, values that mean
/// something else than they say. One sentence each, in file order. `ini` holds the file at `path`, of which
/// the lengths of the lines are taken.
std::vector<std::string> FindLikelyMistakes(IniReaderWriter& ini, const std::string& path);

}  // namespace quorbel
