#include "tools/wsdl/ServiceDescription.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "soap/CVsoapParser.h"
#include "soap/Envelopes.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TempDir.h"
#include "tests/support/XmlTree.h"
#include "tools/wsdl/RequestElements.h"

using namespace quorbel;

namespace {

using Names = std::vector<std::string>;

const std::string kWsdl = "http://schemas.xmlsoap.org/wsdl/|";
const std::string kXs = std::string(kSchemaNamespace) + "|";
const std::string kEnvelope = std::string(kSoapEnvelopeNamespace) + "|";

/// The elements of a method's request as the description declares them.
Names DescribedElements(const XmlNode& description, const std::string& method) {
    Names names;
    const XmlNode& schema = *description.Child(kWsdl + "types").Children(kXs + "schema").at(0);
    for (const XmlNode* element : schema.Children(kXs + "element")) {
        if (element->Attribute("name") != method) continue;
        const XmlNode& sequence = element->Child(kXs + "complexType").Child(kXs + "sequence");
        for (const XmlNode* member : sequence.Children(kXs + "element"))
            names.push_back(member->Attribute("name"));
    }
    return names;
}

std::string Element(const std::string& name, const std::string& content) {
    return std::string("<").append(name).append(">").append(content).append("</").append(name).append(">");
}

/// A recorded request's elements, in the order in which its client sent them, each once.
Names SentElements(const XmlNode& method) {
    Names names;
    for (const XmlNode& element : method.children) {
        const std::string name = element.name.substr(element.name.find('|') + 1);
        if (names.empty() || names.back() != name) names.push_back(name);
    }
    return names;
}

}  // namespace

// Clients generate code from the description: a change of it is a change of their programs.
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

// Clients that were built from an earlier description must find their order again.
TEST(ServiceDescription, KeepsTheOrderInWhichClientsHaveSent) {
    const XmlNode description = ParseXml(ServiceDescription());
    int compared = 0;
    for (const auto& file : std::filesystem::directory_iterator(REQUESTS_DIR)) {
        const std::string client = file.path().filename().string();
        if (!client.starts_with("gsoap-") && !client.starts_with("zeep-"))
            continue;  // others send in any order
        const XmlNode request = ParseXml(ReadFile(file.path().string()));
        const XmlNode& method = request.Child(kEnvelope + "Body").children.at(0);
        const Names described = DescribedElements(description, method.name.substr(method.name.find('|') + 1));
        auto from = described.begin();
        for (const std::string& element : SentElements(method)) {
            from = std::find(from, described.end(), element);
            EXPECT_NE(from, described.end()) << client << " " << element;
        }
        ++compared;
    }
    EXPECT_GT(compared, 15);
}
