#pragma once

#include <string>
#include <vector>

namespace quorbel {

/// The numbers are the exit statuses of monitoring plugins.
enum class State { Ok = 0, Warning = 1, Critical = 2 };

/// What one look at a site came to.
struct Finding {
    State state = State::Ok;
    std::string point;  ///< what was looked at: "ca-bundle"
    std::string text;   ///< one sentence
};
using Findings = std::vector<Finding>;

/// A site: its directory, and those that everything is in.
struct Site {
    std::string root;
    std::string config = root + "/config";
    std::string web = root + "/web";
};

// Each looks at some points of a site, as the user who runs the program, and changes nothing.

/// The directories of `dir`, their rights, and the room on their disks.
Findings CheckDirectories(const Site& site);
/// What each module's log really does, and who holds locks.
Findings CheckLogs(const Site& site);
/// The message catalogue, the link of the web folder, the service description.
Findings CheckParts(const Site& site);
/// The authorities of the CA bundle.
Findings CheckBundle(const Site& site);
/// The list of allowed servers, and whether each address is allowed and takes connections, with a certificate
/// that the bundle vouches for.
Findings CheckServers(const Site& site, const std::vector<std::string>& urls);

/// The resident program, where it is installed, as the user who looks: its socket is the web server's, and its own
/// user may not connect.
Findings CheckResident();

}  // namespace quorbel
