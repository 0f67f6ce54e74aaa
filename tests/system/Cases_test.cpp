// One test for each folder of cases/: the real program, a real server on loopback, and the bytes that must come out.
//
//   request.xml  the body; {URL} is the server's address, {DEAD} one where nobody listens
//   environment  lines that replace the usual CGI variables ("-NAME" removes one)
//   reply        the server's reply (default "Done.\r\n")
//   missing      so many bytes are announced beyond the reply and never sent
//   answer.xml   the document that must come out, or
//   fault        the string of the fault that must; with neither, nothing may
//   posts        the bodies that must reach the server, one line each
//   exit         the exit status (default 0)
//   log          texts that must stand in the log in this order; "!text" must not stand there
//
// What the delivery journal must say of every case stands in the file deliveries, a line each.

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <regex>
#include <sstream>

#include "tests/support/Eventually.h"
#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"
#include "tests/system/ResidentProgram.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// Scheme, host and port of an address.
std::string ServerPart(const std::string& url) {
    return url.substr(0, url.find('/', url.find("://") + 3));
}

class Case {
public:
    explicit Case(fs::path folder) : folder_(std::move(folder)) {}

    bool Has(const char* name) const { return fs::exists(folder_ / name); }
    std::string Text(const char* name, const std::string& otherwise = {}) const {
        return Has(name) ? ReadFile((folder_ / name).string()) : otherwise;
    }
    int Number(const char* name) const { return std::stoi(Text(name, "0")); }
    std::vector<std::string> Environment() const { return Lines(Text("environment")); }
    HttpReply Reply() const {
        return {.body = Text("reply", "Done.\r\n"), .missing = static_cast<std::size_t>(Number("missing"))};
    }
    std::string Request(const LoopbackServer& server) const {
        return ReplaceAll(ReplaceAll(Text("request.xml"), "{URL}", server.Url()), "{DEAD}", DeadUrl());
    }
    std::string Answer() const {
        if (Has("fault")) return FaultDocument(Lines(Text("fault")).at(0));
        return Text("answer.xml");
    }

private:
    fs::path folder_;
};

void ExpectInOrder(const std::string& log, const std::vector<std::string>& texts) {
    std::size_t from = 0;
    for (const auto& text : texts) {
        if (text.starts_with('!')) {
            EXPECT_EQ(log.find(text.substr(1)), log.npos) << "'" << text << "' failed in\n" << log;
            continue;
        }
        const std::size_t at = log.find(text, from);
        ASSERT_NE(at, log.npos) << "'" << text << "' is not in, or comes too early in\n" << log;
        from = at + text.size();
    }
}

/// The journal's entries without what differs from run to run.
std::string Masked(std::string journal, const LoopbackServer& server) {
    journal =
        std::regex_replace(journal, std::regex(R"(\S+ \S+ Deliveries (\[\w+\]) at=\S+ id=\w{8} )"), "$1 ");
    journal = std::regex_replace(journal, std::regex(R"( ms=\d+)"), "");
    return ReplaceAll(ReplaceAll(journal, ServerPart(server.Url()), "{URL}"), ServerPart(DeadUrl()),
                      "{DEAD}");
}

/// The case's line in the table of deliveries; empty when the journal must say nothing of it.
std::string ToldDelivery(const std::string& name) {
    for (const auto& line : Lines(ReadFile(DELIVERIES))) {
        if (line.starts_with(name + ": ")) return line.substr(name.size() + 2) + "\n";
    }
    return {};
}

void ExpectTold(const Case& c, const std::string& answer, const LoopbackServer& server,
                const std::string& log) {
    EXPECT_EQ(answer, c.Answer());
    ExpectWellFormed(answer);
    EXPECT_EQ(server.Bodies(), Lines(c.Text("posts")));
    ExpectInOrder(log, Lines(c.Text("log")));
}

std::vector<std::string> CaseNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(CASES_DIR)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string NameOfCase(const testing::TestParamInfo<std::string>& info) {
    return ReplaceAll(info.param, "-", "_");
}

class CasesTest : public testing::TestWithParam<std::string> {};

}  // namespace

TEST_P(CasesTest, GivesTheToldAnswer) {
    const Case c(fs::path(CASES_DIR) / GetParam());
    const LoopbackServer server(c.Reply());
    const FrontEnd frontEnd;
    const ProgramResult result = frontEnd.Serve(c.Request(server), c.Environment());
    ExpectTold(c, BodyOf(result), server, frontEnd.Log());
    EXPECT_EQ(Masked(frontEnd.Journal(), server), ToldDelivery(GetParam()));
    EXPECT_EQ(result.exitStatus, c.Number("exit"));
}

INSTANTIATE_TEST_SUITE_P(System, CasesTest, testing::ValuesIn(CaseNames()), NameOfCase);

TEST(Resident, OneWorkerServesEveryCaseInAnyOrder) {
    std::vector<std::string> names = CaseNames();
    std::erase(names, "fault-no-length");  // by SCGI every request has a length
    const FrontEnd frontEnd;
    const ResidentProgram resident(frontEnd.Site().Path(), {"--workers=1", "--spare=1"});
    ASSERT_TRUE(Eventually([&] { return resident.Workers().size() == 1; }));
    const auto workers = resident.Workers();
    for (const unsigned seed : {1u, 2u}) {
        std::shuffle(names.begin(), names.end(), std::minstd_rand(seed));
        for (const auto& name : names) {
            SCOPED_TRACE(name);
            const Case c(fs::path(CASES_DIR) / name);
            const LoopbackServer server(c.Reply());
            const std::size_t logged = frontEnd.Log().size();
            const std::size_t told = frontEnd.Journal().size();
            const std::string request = c.Request(server);
            const std::string answer = resident.Ask(request, CgiVariables(request, c.Environment()));
            const std::string log = frontEnd.Log().substr(logged);
            ExpectTold(c, answer, server,
                       ReplaceAll(log, "/quorbel-soapd] STARTED", "/quorbel-soap] STARTED"));
            EXPECT_EQ(Masked(frontEnd.Journal().substr(told), server), ToldDelivery(name));
        }
    }
    EXPECT_EQ(resident.Workers(), workers) << "not all in one worker";
}
