#include "resident/ListeningSocket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

/// A listening socket as another program makes it.
int Listen(const std::string& path, int type = SOCK_STREAM) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, type, 0);
    EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    if (type == SOCK_STREAM) {
        EXPECT_EQ(listen(descriptor, 5), 0);
    }
    return descriptor;
}

}  // namespace

TEST(ListeningSocket, ReplacesWhatADeadProcessLeftAndNothingElse) {
    const TempDir dir;
    const std::string path = dir / "soapd.sock";
    close(Listen(path));
    {
        const ListeningSocket socket(path);
        EXPECT_EQ(InChildProcess([&] { ListeningSocket second(path); }), Child::Threw) << "two at one socket";
        struct stat status = {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0660u);
    }
    EXPECT_FALSE(fs::exists(path));

    const int other = Listen(path);
    EXPECT_THROW(ListeningSocket{path}, std::runtime_error) << "somebody without the lock listens";
    EXPECT_TRUE(fs::exists(path));
    close(other);
    fs::remove(path);
    const int datagrams = Listen(path, SOCK_DGRAM);
    EXPECT_THROW(ListeningSocket{path}, std::runtime_error) << "a living socket of another kind";
    EXPECT_TRUE(fs::exists(path));
    close(datagrams);
    fs::remove(path);
    dir.Write("soapd.sock", "a file");
    EXPECT_THROW(ListeningSocket{path}, std::runtime_error);
    EXPECT_EQ(ReadFile(path), "a file");
    EXPECT_THROW(ListeningSocket{dir / "missing/soapd.sock"}, std::runtime_error);
    EXPECT_THROW(ListeningSocket{dir / std::string(108, 'x')}, std::runtime_error);
}

TEST(ListeningSocket, KeepsTheOneThatIsHandedOver) {
    const TempDir dir;
    const std::string path = dir / "handed.sock";
    const auto takeOver = [&](int descriptor) {
        dup2(descriptor, 3);
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
        setenv("LISTEN_FDS", "1", 1);
        ListeningSocket socket(dir / "own.sock");
        const bool kept =
            socket.Descriptor() == 3 && !socket.IsOwn() && (fcntl(3, F_GETFL) & O_NONBLOCK) != 0;
        socket.Shut();
        if (!kept || !fs::exists(path) || std::getenv("LISTEN_FDS") != nullptr) _exit(2);
    };
    const int listening = Listen(path);
    EXPECT_EQ(InChildProcess([&] { takeOver(listening); }), Child::Finished);
    EXPECT_FALSE(fs::exists(dir / "own.sock"));
    const int connected = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(InChildProcess([&] { takeOver(connected); }), Child::Threw) << "not a listening socket";
    close(connected);
    close(listening);
}
