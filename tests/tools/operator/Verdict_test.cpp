#include <gtest/gtest.h>

#include <filesystem>

#include "tests/tools/operator/OperatorSite.h"

using namespace quorbel;

namespace {

/// What `cvlogs check` says under a label about its only module.
std::string Told(const std::string& report, const std::string& label) {
    const std::size_t at = report.find("\n    " + label + " ");
    if (at == std::string::npos) return {};
    const std::size_t start = report.find_first_not_of(' ', at + 5 + label.size());
    return report.substr(start, report.find('\n', start) - start);
}

std::string PathIn(const std::string& text) {
    return text.substr(0, text.find(" ("));
}

bool Holds(const OperatorSite& site, const std::string& path, const std::string& text) {
    const bool isDatabase = path.ends_with(".sdb");
    const auto query = site.Logs({"query", isDatabase ? "--db" : "--file", path, "--module", "SOAP"});
    return query.output.find(text) != std::string::npos;
}

}  // namespace

TEST(Verdict, OfCheckIsWhatTheLogDoes) {
    const char* const sections[] = {
        "[SOAP]\n",
        "[SOAP]\nfilePath={SITE}/logs/a.txt\n",
        "[SOAP]\nfilePath=\n",
        "[SOAP]\nfilePath={SITE}/none/a.txt\n",
        "[SOAP]\nfilePath={SITE}/logs\n",
        "[SOAP]\nfilePath={SITE}/logs/a.txt\nfilePath={SITE}/none/b.txt\n",
        "[SOAP]\nfilePath={SITE}/none/b.txt\nfilePath={SITE}/logs/a.txt\n",
        "[main]\nfilePath={SITE}/logs/main.txt\n[SOAP]\n",
        "[main]\nwriter=sqlite\ndbfilename={SITE}/logs/main.sdb\n[soap]\nlevel=info\n",
        "[SOAP]\nwriter=sqlite\n",
        "[SOAP]\nwriter=sqlite\nfilename={SITE}/logs/f.sdb\n",
        "[SOAP]\nwriter=sqlite\ndbfilename={SITE}/none/a.sdb\n",
        "[SOAP]\nwriter=sqlite\ndbfilename={SITE}/config/dir\n",
        "[SOAP]\nwriter=SQLite\ndbfilename={SITE}/logs/t.sdb\ntruncate=1\n",
        "[SOAP]\nwriter=fiel\n",
        "[SOAP]\nwriter=qtdebug\n",
        "[SOAP]\nwriter=common\n",
        "[SOAP]\nwriter=common\n[common]\nfilePath={SITE}/logs/c.txt\n",
        "[SOAP]\nwriter=common\n[common]\nwriter=sqlite\ndbfilename={SITE}/logs/c.sdb\n",
        "[SOAP]\nwriter=common\n[common]\nwriter=common\n",
        "[SOAP]\nwriter=common\n[common]\nfilePath={SITE}/none/c.txt\n",
        "[SOAP]\nlevel=error\n",
        "[SOAP]\nlevel=verbose\n",
        "[SOAP]\nnumFiles=0\nbytesPerFiles=-1\n",
        "[SOAP]\nperProcessFile=1\nfilePath={SITE}/logs/a.txt\n",
        "[SOAP]\nfilePath={SITE}/logs/locked.txt\n",
    };
    for (const char* section : sections) {
        const OperatorSite site(section);
        std::filesystem::create_directory(site.Files() / "logs/locked.txt.lock");
        const std::string report = site.Logs({"check", "--config-dir", site.Config()}).output;
        const bool ready = Told(report, "ready") == "yes";
        const auto written = site.Logs(
            {"write", "--config-dir", site.Config(), "--module", "SOAP", "--level", "fatal", "verdict"});
        EXPECT_EQ(written.exitStatus, ready ? 0 : 1) << section << report << written.errors;

        std::string path = PathIn(Told(report, "file") + Told(report, "database"));
        if (report.find("MODULE.txt beside it") != std::string::npos) path = site.Files() / "logs/SOAP.txt";
        if (!ready || path.empty()) continue;  // standard error has no path
        EXPECT_TRUE(Holds(site, path, "verdict")) << section << report;
    }
}

TEST(Verdict, OfTheLevelIsWhatTheLogKeeps) {
    const struct {
        const char* value;
        const char* told;
        const char* below;
    } cases[] = {{"info", "INFO", "debug"},
                 {"criti", "CRITICAL", "error"},
                 {"verbose", "WARN", "info"},
                 {"", "INFO", "debug"}};
    for (const auto& c : cases) {
        const OperatorSite site(std::string("[SOAP]\nlevel=") + c.value + "\nfilePath={SITE}/logs/a.txt\n");
        const auto exitStatus = [&](const char* level) {
            return site
                .Logs({"write", "--config-dir", site.Config(), "--module", "SOAP", "--level", level, "text"})
                .exitStatus;
        };
        EXPECT_EQ(Told(site.Logs({"check", "--config-dir", site.Config()}).output, "level"), c.told);
        EXPECT_EQ(exitStatus(c.told), 0) << c.value;
        EXPECT_EQ(exitStatus(c.below), 1) << c.value;
    }
}
