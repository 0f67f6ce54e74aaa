#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "CVException.h"
#include "tools/check/Finding.h"
#include "tools/operator/CommandLine.h"
#include "tools/operator/Output.h"
#include "tools/operator/Text.h"

using namespace quorbel;

namespace {

constexpr const char* kStates[] = {"OK", "WARNING", "CRITICAL"};
constexpr int kUnknown = 3;  // to monitoring: the check itself failed

struct Options {
    std::string site;
    std::string user;
    bool asJson = false;
    std::vector<std::string> urls;
};

// For good: rights are what is looked at. Without a name it is the owner of the logs.
void BecomeUser(const std::string& name, const std::string& logs) {
    if (geteuid() != 0) return;
    struct stat status {};
    const bool known = stat(logs.c_str(), &status) == 0;
    const passwd* user = !name.empty() ? getpwnam(name.c_str()) : known ? getpwuid(status.st_uid) : nullptr;
    if (user == nullptr && name.empty()) return;
    if (user == nullptr) throw std::runtime_error("there is no user " + name);
    if (user->pw_uid == 0) return;
    if (initgroups(user->pw_name, user->pw_gid) != 0 || setgid(user->pw_gid) != 0 ||
        setuid(user->pw_uid) != 0) {
        throw std::runtime_error("cannot become " + std::string(user->pw_name) + ": " + GetSystemErrorText());
    }
}

Findings Look(const Site& site, const std::string& user, const std::vector<std::string>& urls) {
    Findings all = CheckResident();
    BecomeUser(user, site.root + "/logs");
    for (const Findings& some : {CheckDirectories(site), CheckLogs(site), CheckParts(site), CheckBundle(site),
                                 CheckServers(site, urls)}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Finding& a, const Finding& b) { return a.state > b.state; });
    return all;
}

void Print(const Finding& finding, bool asJson) {
    const std::string state = kStates[static_cast<int>(finding.state)];
    if (!asJson) return PrintLine(state + " " + finding.point + ": " + Visible(finding.text));
    PrintLine("{\"state\":" + JsonString(state) + ",\"point\":" + JsonString(finding.point) +
              ",\"text\":" + JsonString(finding.text) + "}");
}

int Check(const Options& options) {
    const Site site{options.site.empty() ? OwnSite() : options.site};
    const Findings findings = Look(site, options.user, options.urls);
    for (const Finding& finding : findings) Print(finding, options.asJson);
    return static_cast<int>(findings.front().state);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    int status = 0;
    const CommandLine line = {
        .name = "quorbel-check",
        .help =
            "Looks at a whole site as the user of its programs sees it, and tells what is wrong, worst first.",
        .options =
            {
                {"--site", "DIR", "The site (default: the one that this program is installed in)",
                 &options.site},
                {"--user", "USER", "Look as this user, when run by root (default: the owner of logs)",
                 &options.user},
                {"--json", "", "Print one JSON object a line", &options.asJson},
                {"URL", "", "Paging servers to connect to", &options.urls},
            },
        .commands = {},
        .run = [&] { status = Check(options); },
    };
    return RunTool(line, argc, argv) == 0 ? status : kUnknown;
}
