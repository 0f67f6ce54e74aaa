// What the delivery journal tells of a request beyond the table of deliveries.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"

using namespace quorbel;
using testing::HasSubstr;
using testing::Not;

namespace {

std::string Envelope(const std::string& url, const std::string& fields) {
    return "<Envelope><SendStdMessage><szURL>" + url + "</szURL>" + fields +
           "<szMessage>TOP-SECRET text</szMessage></SendStdMessage></Envelope>";
}

/// Sets the level of the section [Deliveries], or removes the section.
void Configure(const FrontEnd& frontEnd, const std::string& level) {
    std::string ini = ReadFile(frontEnd.Site() / "config/cvlogs.ini");
    if (level.empty()) {
        ini.erase(ini.find("[Deliveries]"));
    } else {
        ini = ReplaceAll(ini, "level=info", "level=" + level);
    }
    frontEnd.Site().Write("config/cvlogs.ini", ini);
}

}  // namespace

TEST(Journal, TellsOnlyPublicPartsAndFollowsTheWebServersId) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    const std::string url = ReplaceAll(server.Url(), "http://", "http://kim:pass4711@");
    frontEnd.Serve(
        Envelope(url, "<szRecipientName>night</szRecipientName><szAdminPassword>pass4712</szAdminPassword>"),
        {"HTTP_X_REQUEST_ID=lb-1.4711", "REMOTE_ADDR=10.0.0.5", "REMOTE_USER=kim lee"});
    const std::string journal = frontEnd.Journal();
    EXPECT_THAT(journal, HasSubstr(" id=lb-1.4711 method=SendStdMessage to=night server=http://127.0.0.1:"));
    EXPECT_THAT(journal, HasSubstr(" client=10.0.0.5 user=\"kim lee\" reply=OK\n"));
    EXPECT_THAT(journal, Not(HasSubstr("pass47")));
    EXPECT_THAT(journal, Not(HasSubstr("TOP-SECRET")));
}

TEST(Journal, ReplacesAnIdThatIsTooLong) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    const std::string longest(64, '7');
    for (const std::string& id : {longest, longest + "7"}) {
        frontEnd.Serve(MessageTo(server.Url()), {"HTTP_X_REQUEST_ID=" + id});
    }
    const std::string journal = frontEnd.Journal();
    EXPECT_THAT(journal, HasSubstr(" id=" + longest + " method="));
    EXPECT_THAT(journal, testing::ContainsRegex(" id=[0-9a-f]{8} method="));
}

TEST(Journal, TellsAtDebugWhatIsAboutToBeSent) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    Configure(frontEnd, "debug");
    frontEnd.Serve(MessageTo(server.Url()));
    const std::string journal = frontEnd.Journal();
    EXPECT_LT(journal.find("outcome=sending"), journal.find("outcome=answered"));
    EXPECT_EQ(std::count(journal.begin(), journal.end(), '\n'), 2) << journal;
}

TEST(Journal, StaysOneLineWhateverIsSent) {
    const LoopbackServer server(
        {.body = "one\r\n11/21/2026 17:00:00 Deliveries [INFO] outcome=answered\x1b[2J\r\n"});
    const FrontEnd frontEnd;
    frontEnd.Serve(
        Envelope(server.Url(), "<szRecipientName><![CDATA[a\" outcome=answered]]></szRecipientName>"),
        {"HTTP_X_REQUEST_ID=two words", "REMOTE_USER=x\ny"});
    const std::string journal = frontEnd.Journal();
    EXPECT_EQ(std::count(journal.begin(), journal.end(), '\n'), 1) << journal;
    EXPECT_THAT(journal, HasSubstr(R"(to="a\" outcome=answered")"));
    EXPECT_THAT(journal, HasSubstr(R"(user="x\ny" reply="one\r\n11/21/2026)"));
    EXPECT_THAT(journal, HasSubstr(R"(\x1b[2J")"));
    EXPECT_THAT(journal, Not(HasSubstr("two words"))) << "an id that is no word is replaced";
}

TEST(Journal, TellsOnlyTheBeginningOfARecipientAndOfAJob) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    const std::string longName(201, 'n');
    frontEnd.Serve(Envelope(server.Url(), "<szRecipientName>" + longName + "</szRecipientName><szJobID>" +
                                              longName + "</szJobID>"));
    const std::string told = longName.substr(1);
    EXPECT_THAT(frontEnd.Journal(), HasSubstr(" to=" + told + " job=" + told + " server="));
}

TEST(Journal, IsNotKeptWithoutItsSection) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    Configure(frontEnd, "");
    const std::string ini = ReadFile(frontEnd.Site() / "config/cvlogs.ini");
    frontEnd.Serve(MessageTo(server.Url()));
    EXPECT_EQ(server.Bodies().size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(frontEnd.Site() / "logs/deliveries_log.txt"));
    EXPECT_EQ(ReadFile(frontEnd.Site() / "config/cvlogs.ini"), ini) << "nothing is added to the file";
}

TEST(Journal, ThatCannotBeWrittenStopsNoPage) {
    const LoopbackServer server({.body = "OK\r\n"});
    const FrontEnd frontEnd;
    std::filesystem::create_directory(frontEnd.Site() / "logs/deliveries_log.txt");
    const ProgramResult result = frontEnd.Serve(MessageTo(server.Url()));
    EXPECT_THAT(BodyOf(result), HasSubstr("<SendStdMessageResult>OK"));
    EXPECT_EQ(server.Bodies().size(), 1u);
}
