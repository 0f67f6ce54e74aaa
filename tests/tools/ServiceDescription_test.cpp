#include "tools/wsdl/ServiceDescription.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "soap/CVsoapParser.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TempDir.h"
#include "tools/wsdl/RequestElements.h"

using namespace quorbel;

namespace {

std::string Element(const std::string& name, const std::string& content) {
    return std::string("<").append(name).append(">").append(content).append("</").append(name).append(">");
}

}  // namespace

// Clients generate code from the description: a change of it, and of the order in it, is a change of their programs.
TEST(ServiceDescription, IsThePublishedOne) {
    const std::string published = ReadFile(PUBLISHED_DESCRIPTION);
    const std::string description = ServiceDescription();
    const auto difference =
        std::mismatch(published.begin(), published.end(), description.begin(), description.end());
    const std::size_t at = static_cast<std::size_t>(difference.second - description.begin());
    EXPECT_EQ(description == published, true)
        << "differs from " << PUBLISHED_DESCRIPTION << " at byte " << at << ":\n"
        << description.substr(at, 200)
        << "\nWhen that is meant, build/release/share/quorbel.wsdl is the new one.";
}

// The point of the order: a client that sends all that is described loses nothing of it.
TEST(ServiceDescription, LetsEveryElementOfAFullCompactRequestArrive) {
    for (const Method& method : Methods()) {
        const std::string name(method.name);
        const auto valueOf = [](const Field& rule) {
            return rule.element.starts_with('b') ? "true" : "<" + std::string(rule.element) + ">";
        };
        std::string fields;
        for (const Field& rule : RequestElementsOf(method)) {
            fields += Element(std::string(rule.element), "<![CDATA[" + valueOf(rule) + "]]>");
        }
        RequestRecord record;
        RecordingLog log;
        ParseEnvelope(Element("Envelope", Element(name, fields)).c_str(), record, log);
        for (const Field& rule : RequestElementsOf(method)) {
            const bool isCutOff = name == "SetUserGroupDeptPermission" && rule.slot == Slot::Url2;
            if (rule.kind != FieldKind::Text || isCutOff) continue;
            EXPECT_EQ(record[rule.slot], valueOf(rule)) << name << " " << rule.element;
        }
    }
}
