// What the program does beyond one request and its answer: sites it cannot use, floods, limits.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"

using namespace quorbel;

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr char kInvalidLog[] = "2301 Invalid log directory";

std::string Repeat(const std::string& text, int count) {
    std::string repeated;
    for (int i = 0; i < count; ++i) repeated += text;
    return repeated;
}

void ExpectFault(const ProgramResult& result, const std::string& fault, int exitStatus) {
    EXPECT_EQ(BodyOf(result), FaultDocument(fault));
    EXPECT_EQ(result.exitStatus, exitStatus);
}

std::string Attributes(int count) {
    std::string attributes;
    for (int i = 0; i < count; ++i) attributes += "x" + std::to_string(i) + "='' ";
    return attributes;
}

}  // namespace

TEST(Program, SitesThatCannotLogAreRefused) {
    const struct {
        const char* what;
        const char* file;
        const char* content;
    } cases[] = {
        {"no directory file", "config/dir", nullptr},
        {"a directory in its place", "config/dir/file", ""},
        {"a log directory below a file", "config/dir", "spool_dir:\t\t/s\nlog_dir:\t\t/etc/hostname/logs\n"},
        {"a log directory that is missing", "config/dir", "log_dir:\t\t/nonexistent/logs\n"},
        {"an unknown writer", "config/cvlogs.ini", "[SOAP]\nwriter=paper\n"},
        {"a database without a name", "config/cvlogs.ini", "[SOAP]\nwriter=sqlite\n"},
    };
    for (const auto& c : cases) {
        const FrontEnd frontEnd;
        fs::remove(frontEnd.Site() / "config/cvlogs.ini");
        if (std::string_view(c.file).starts_with("config/dir")) fs::remove(frontEnd.Site() / "config/dir");
        if (c.content != nullptr) frontEnd.Site().Write(c.file, c.content);
        SCOPED_TRACE(c.what);
        ExpectFault(frontEnd.Serve("<Envelope/>"), kInvalidLog, 255);
    }
}

TEST(Program, FreshSiteLogsWithoutAnyHandwork) {
    LoopbackServer server;
    const FrontEnd frontEnd;
    fs::remove(frontEnd.Site() / "config/cvlogs.ini");
    const auto result = frontEnd.Serve(MessageTo(server.Url()));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(
        ReadFile(frontEnd.Site() / "config/cvlogs.ini"),
        HasSubstr("[SOAP]\nwriter=file\nlevel=info\nfilePath=" + frontEnd.Site() / "logs/soap_log.txt\n"));
    EXPECT_EQ(frontEnd.Log(), "") << "nothing of a served message is above the default level";
    frontEnd.Serve("", {"REQUEST_METHOD=GET"});
    EXPECT_THAT(frontEnd.Log(), HasSubstr("SOAP [ERROR] Invalid command\n"));
    EXPECT_THAT(ReadFile(frontEnd.Site() / "config/dir"),
                HasSubstr("101\tDefault\t" + frontEnd.Site() / "spool\n"));
}

TEST(Program, MessageOfManyLinesArrivesAsFarAsTheServersFieldGoes) {
    LoopbackServer server;
    const FrontEnd frontEnd;
    const auto result =
        frontEnd.Serve(MessageTo(server.Url(), "<szMessage>" + Repeat("ab\n", 300000) + "</szMessage>"));
    EXPECT_EQ(result.exitStatus, 0);
    ASSERT_EQ(server.Bodies().size(), 1u);
    EXPECT_EQ(server.Bodies()[0].size(), std::string("cmd=Cli&modid=cli&name=oncall&message=").size() + 9996);
}

TEST(Program, ReplyOfManyLinesIsListedWhole) {
    LoopbackServer server({.body = "OK\r\n" + Repeat("item %s & more\r\n", 20000)});
    const FrontEnd frontEnd;
    const auto result = frontEnd.Serve("<Envelope><QueryMessage><szURL>" + server.Url() +
                                       "</szURL></QueryMessage></Envelope>");
    const std::string body = BodyOf(result);
    ExpectWellFormed(body);
    const std::string item = "          <string>item %s &amp; more</string>\n";
    EXPECT_THAT(body, HasSubstr("         <szResult>\n" + Repeat(item, 20000) + "         </szResult>\n"));
}

TEST(Program, FloodsOfItemsAreBounded) {
    LoopbackServer server;
    const FrontEnd frontEnd;
    const std::string actions = Repeat(
        "<ResponseActionData><szResponse>r</szResponse><szAction>a</szAction><bFinal>f</bFinal>"
        "</ResponseActionData>",
        400);
    const std::string field =
        "<CustomFieldData><szFieldName>n</szFieldName><szFieldValue>v</szFieldValue></CustomFieldData>";
    // Many fields overwrite the actions, which lose their third line by that.
    for (const auto& [fields, lines] : {std::pair(4, 1024), {400, 3 + 256 * 3}}) {
        EXPECT_EQ(frontEnd.Serve(MessageTo(server.Url(), actions + Repeat(field, fields))).exitStatus, 0);
        const std::string command = server.Bodies().back();
        EXPECT_EQ(std::count(command.begin(), command.end(), '&') + 1, lines);
    }
}

TEST(Program, HostileDocumentsEndInTheirFault) {
    constexpr char kMalformed[] = "2030 Invalid SOAP message";
    constexpr char kNoMethodInside[] = "2004 Invalid command";
    constexpr char kNoAddress[] = "2004 Missing URL";
    const std::pair<std::string, const char*> cases[] = {
        {"<!DOCTYPE b [<!ENTITY x SYSTEM \"file:///etc/hostname\">]><SendStdMessage/>", kMalformed},
        {Repeat("<a>", 10000), kNoMethodInside},
        {Repeat("<a>", 200000), kMalformed},  // more memory than the document is worth
        {"<a " + Attributes(100000) + "/>", kMalformed},
        {"<SendStdMessage nil=''>" + Repeat("<szURL2>x</szURL2>", 50000), kNoAddress},
        {std::string(300000, '<'), kMalformed},
        {"<SendStdMessage><" + std::string(1000000, 'n') + "/></SendStdMessage>", kNoAddress},
        {"\xEF\xBB\xBF<a/>\xFF\xFE", kMalformed},
    };
    const FrontEnd frontEnd;
    for (const auto& [document, fault] : cases) {
        SCOPED_TRACE(document.substr(0, 60));
        ExpectFault(frontEnd.Serve(document), fault, fault == kMalformed ? 255 : 0);
    }
}

TEST(Program, RequestCutAnywhereEndsInOneAnswer) {
    LoopbackServer server;
    const FrontEnd frontEnd;
    const std::string request = MessageTo(server.Url(), "<szMessage>caf\xC3\xA9 &amp; more</szMessage>");
    for (std::size_t length = 1; length < request.size(); length += 9) {
        const auto result = frontEnd.Serve(request.substr(0, length));
        SCOPED_TRACE(length);
        EXPECT_NE(BodyOf(result), "");
        ExpectWellFormed(BodyOf(result));
        EXPECT_TRUE(result.exitStatus == 0 || result.exitStatus == 255);
    }
}

/// What memory does to the program shows only without sanitizers: script/test names the release program.
class ReleaseProgram : public testing::Test {
protected:
    void SetUp() override {
        const char* path = std::getenv("QUORBEL_RELEASE_PROGRAM");
        if (path == nullptr) GTEST_SKIP() << "run by script/test";
        program = path;
    }
    std::string program;
    const FrontEnd frontEnd;
};

TEST_F(ReleaseProgram, RefusesALengthThatNoMemoryHolds) {
    ExpectFault(frontEnd.ServeWith(program, "<a/>", {"CONTENT_LENGTH=9223372036854775806"}),
                "2030 Invalid SOAP envelope length", 255);
}

TEST_F(ReleaseProgram, SendsNoPageInPartWhenMemoryEnds) {
    std::string text;
    text.resize(12000000, 'm');
    const std::string message = "<szMessage>" + text + "</szMessage>";
    bool sent = false;
    for (int megabytes = 100; megabytes < 300; megabytes += 20) {
        SCOPED_TRACE(megabytes);
        LoopbackServer server;
        const std::string limited = "ulimit -v " + std::to_string(megabytes << 10) + "; exec " + program;
        const auto result =
            frontEnd.ServeWith("/bin/sh", MessageTo(server.Url(), message), {}, {"-c", limited});
        if (result.exitStatus == 127) continue;  // not even the program fits
        const std::string answer = BodyOf(result);
        ExpectWellFormed(answer);
        EXPECT_EQ(answer.find("Result></"), answer.npos) << "clients take an empty result for success";
        sent = answer.find(">OK") != answer.npos;
        const auto commands = server.Bodies();
        EXPECT_TRUE(!sent || commands.at(0).size() > 9996) << "a page without its text";
    }
    EXPECT_TRUE(sent) << "the largest limit is enough";
}

/// bench/memory has all shapes.
TEST_F(ReleaseProgram, TakesThreeTimesTheRequestAtMost) {
    const LoopbackServer server;
    const std::string ini =
        ReplaceAll(ReadFile(frontEnd.Site() / "config/cvlogs.ini"), "level=info", "level=debug");
    frontEnd.Site().Write("config/cvlogs.ini", ini);
    const std::string longText(16 << 20, 'x');
    const std::string oneServer(7900000, '\\');
    const struct {
        std::string url, fields;
    } cases[] = {
        {server.Url() + longText, ""},
        {DeadUrl() + "/" + oneServer, SecondUrl(server.Url() + oneServer)},
        {server.Url(), "<szRecipientName>" + longText + "</szRecipientName>"},
    };
    for (const auto& c : cases) {
        const auto result =
            frontEnd.ServeWith(program, MessageTo(c.url, c.fields + "<szMessage>m</szMessage>"));
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_LT(result.peakMemoryKiB, (3 * 16 + 20) * 1024) << c.url.substr(0, 40);
    }
}

TEST_F(ReleaseProgram, TouchesLittleMemory) {
    LoopbackServer server;
    const auto result = frontEnd.ServeWith(program, MessageTo(server.Url(), "<szMessage>m</szMessage>"));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_GT(result.peakMemoryKiB, 0);
    EXPECT_LT(result.peakMemoryKiB, 20 * 1024);
}
