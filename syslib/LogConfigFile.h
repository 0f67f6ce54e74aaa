#pragma once

#include <string>
#include <utility>
#include <vector>

class IniReaderWriter;

namespace quorbel {

/// A section with its entries as they are to stand in the file; the header includes its brackets.
struct LogSection {
    std::string header;
    std::vector<std::pair<std::string, std::string>> entries;
};

/// Loads `ini`, which must lock but not retry, waiting up to ten seconds while another program writes the
/// file. A missing file counts as an empty one. False when the file is there but cannot be read.
bool LoadLogConfig(IniReaderWriter& ini);

/// Adds a section behind "[main]" and everything else, in the file at `path` and in `ini`, unless another
/// process has just done it; `ini` then holds the file's content. False as for LoadLogConfig.
///
/// The new content is written beside the file and takes its place under the lock "<path>.lock", so readers
/// see the old file or the new one, and starts at the same time lose nothing of one another. Where the
/// directory takes no new files the file is rewritten in place. Where that is refused too, only `ini` holds
/// the section, which is no failure: a web user usually may not write there.
bool AddLogSection(IniReaderWriter& ini, const std::string& path, const LogSection& section);

}  // namespace quorbel
