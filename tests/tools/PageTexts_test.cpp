#include "tools/wsdl/PageTexts.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

using namespace quorbel;

namespace {

/// The cells of the rows below a heading of a page in docs/.
std::vector<std::vector<std::string>> RowsOf(const std::string& page, const std::string& heading) {
    std::ifstream file(std::string(DOCS_DIR "/") + page);
    std::vector<std::vector<std::string>> rows;
    bool isInside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("## ")) isInside = line.starts_with(heading);
        if (!isInside || !line.starts_with("| `")) continue;
        auto& cells = rows.emplace_back();
        for (std::size_t at = 0, end = 0; (end = line.find('|', at + 1)) != line.npos; at = end) {
            cells.push_back(line.substr(at + 1, end - at - 1));
        }
    }
    return rows;
}

/// The texts between backquotes.
std::vector<std::string> TextsIn(const std::string& cell) {
    std::vector<std::string> texts;
    for (std::size_t at = 0, end = 0;
         (at = cell.find('`', at)) != cell.npos && (end = cell.find('`', at + 1)) != cell.npos;
         at = end + 1) {
        texts.push_back(cell.substr(at + 1, end - at - 1));
    }
    return texts;
}

/// Each text with "perhaps" when the paging server may have got the command.
using Texts = std::map<std::string, std::string>;

Texts Failures(const std::string& prefix) {
    Texts texts;
    for (const TextMeaning& row : FailureMeanings()) {
        texts[prefix + std::string(row.text)] = row.sent == Sent::No ? "no" : "perhaps";
    }
    return texts;
}

}  // namespace

TEST(PageTexts, AreTheFaultsOfTheGuide) {
    Texts onThePage;
    Texts inTheGuide;
    for (const TextMeaning& row : FaultMeanings()) {
        if (!row.text.starts_with("2012")) onThePage[std::string(row.text)] = "";
    }
    for (const char* number : {"2004", "2030", "2301"}) {
        for (const auto& cells : RowsOf("faults.md", std::string("## ") + number)) {
            inTheGuide[TextsIn(cells.at(0)).at(0)] = "";
        }
    }
    EXPECT_EQ(onThePage, inTheGuide);
}

TEST(PageTexts, AreTheFailuresOfTheGuide) {
    Texts inTheGuide;
    for (const auto& cells : RowsOf("faults.md", "## 2012")) {
        inTheGuide[TextsIn(cells.at(0)).at(0)] = cells.at(1).substr(1, cells.at(1).size() - 2);
    }
    EXPECT_EQ(Failures("2012 "), inTheGuide);
}

TEST(PageTexts, AreTheFailuresThatClientsAreToldOf) {
    Texts told;
    for (const auto& cells : RowsOf("clients.md", "## When it fails")) {
        const bool mustAsk = cells.at(2).find("ask first") != std::string::npos;
        for (const std::string& text : TextsIn(cells.at(0))) {
            if (Failures("").contains(text)) told[text] = mustAsk ? "perhaps" : "no";
        }
    }
    EXPECT_EQ(Failures(""), told);
}
