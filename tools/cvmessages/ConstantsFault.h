#pragma once

#include <string>

namespace quorbel {

/// Where a constants file has the first line that no catalogue can take, as "FILE:LINE: what is wrong with
/// it"; empty when there is none. Throws CVioException, and std::runtime_error for what is no regular file:
/// it is read again by the load.
std::string FindConstantsFault(const std::string& path);

}  // namespace quorbel
