#pragma once

#include <string>

namespace quorbel {

/// Makes the site's directory of CGI programs the working directory, from which the program finds its configuration.
/// Throws std::runtime_error, its text for an operator, when it is no site.
void EnterSite(const std::string& site);

/// Throws the same when requests would be refused here: no file of directories, or a log directory that takes no
/// files.
void CheckSite();

}  // namespace quorbel
