#include "syslib/LogPaths.h"

#include <gtest/gtest.h>

#include "tests/support/ChildProcess.h"

using namespace quorbel;

TEST(LogPaths, NamesLogFilesAfterTheModule) {
    EXPECT_EQ(LogFileName("SOAP"), "soap_log.txt");
    EXPECT_EQ(LogFileName("Email Gateway"), "email_gateway_log.txt");
    EXPECT_EQ(LogFileName("../Up"), ".._up_log.txt");
}

TEST(LogPaths, PutsLogsBesideTheConfigurationUnlessADirectoryIsSet) {
    const std::pair<const char*, const char*> cases[] = {
        {"../../config", "../../logs/l.txt"},          {"/srv/site/config/", "/srv/site/logs/l.txt"},
        {"/srv/site", "/srv/site/logs/l.txt"},         {"config", "./logs/l.txt"},
        {"/srv/myconfig", "/srv/myconfig/logs/l.txt"},
    };
    for (const auto& [configDirectory, path] : cases)
        EXPECT_EQ(DefaultLogPath("l.txt", configDirectory), path);
}

TEST(LogPaths, PutsLogsIntoTheDirectorySet) {
    const struct {
        const char* directory;
        const char* path;
    } cases[] = {{"/var/log/x", "/var/log/x/l.txt"}, {"/var/log/x/", "/var/log/x/l.txt"}, {"", "l.txt"}};
    for (const auto& c : cases) {
        // In a process of its own: the setting holds for the whole process.
        EXPECT_EQ(InChildProcess([&] {
                      SetDefaultLogPath(c.directory);
                      if (DefaultLogPath("l.txt", "../../config") != c.path) throw 0;
                  }),
                  Child::Finished)
            << c.directory;
    }
}
