#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "CVException.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVMessageManager.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "tools/check/Finding.h"
#include "util/BoundedText.h"

namespace quorbel {

namespace {

namespace fs = std::filesystem;

constexpr const char* kResidentSocket = "/run/quorbel/soapd.sock";

Finding CheckCatalogue(const Site& site) {
    const std::string path = CVMessageManager::GetDBFilePath(site.config);
    if (!fs::exists(path)) return {State::Ok, "catalogue", "there is none; it is not needed for sending"};
    if (!IsReadableDatabase(path)) return {State::Warning, "catalogue", path + " cannot be read"};
    try {
        return {State::Ok, "catalogue",
                path + " holds " + std::to_string(CVMessageManager::GetMessages().size()) + " messages"};
    } catch (const CVDBexception& failure) {
        return {State::Warning, "catalogue", path + ": " + failure.GetSystemMessage()};
    }
}

Finding CheckLink(const Site& site) {
    std::error_code failed;
    const std::string path = site.web + "/config";
    if (fs::equivalent(path, site.config, failed))
        return {State::Ok, "web/config", "leads to " + site.config};
    return {State::Critical, "web/config",
            path + " does not lead to " + site.config + ": the program looks for files there"};
}

Finding CheckDescription(const Site& site) {
    constexpr std::string_view kMark = "<soap:address location=\"";
    const std::string path = site.web + "/quorbel.wsdl";
    std::ifstream file(path);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const std::size_t mark = text.find(kMark);
    if (mark == text.npos) return {State::Warning, "description", path + " is missing or names no address"};
    const std::size_t start = mark + kMark.size();
    return {State::Ok, "description",
            "clients are told " + text.substr(start, text.find('"', start) - start)};
}

}  // namespace

Findings CheckResident() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    CopyText(address.sun_path, kResidentSocket);
    if (access(kResidentSocket, F_OK) != 0) return {};  // not installed
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool answers = connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const bool isKeptOut = !answers && errno == EACCES;
    const std::string reason = answers ? " takes requests"
                               : isKeptOut
                                   ? " is the web server's; only root can see whether it takes requests"
                                   : ": " + GetSystemErrorText();
    close(socket);
    const State state = answers || isKeptOut ? State::Ok : State::Critical;
    return {{state, "resident program", kResidentSocket + reason}};
}

Findings CheckParts(const Site& site) {
    return {CheckCatalogue(site), CheckLink(site), CheckDescription(site)};
}

}  // namespace quorbel
