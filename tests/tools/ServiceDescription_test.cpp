#include "tools/wsdl/ServiceDescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "soap/CVsoapParser.h"
#include "soap/ServiceNames.h"
#include "tests/support/Documents.h"
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

Names NamesOf(const std::vector<const XmlNode*>& nodes) {
    Names names;
    for (const XmlNode* node : nodes) names.push_back(node->Attribute("name"));
    return names;
}

Names MethodNames() {
    Names names;
    for (const Method& method : Methods()) names.emplace_back(method.name);
    return names;
}

class ServiceDescriptionTest : public testing::Test {
protected:
    const XmlNode root = ParseXml(ServiceDescription());

    const XmlNode& Part(const std::string& name) const { return root.Child(kWsdl + name); }
    /// 0 is the service's schema, 1 that of its faults.
    const XmlNode& Schema(std::size_t number) const {
        return *Part("types").Children(kXs + "schema").at(number);
    }
    const XmlNode& Named(const XmlNode& parent, const std::string& kind, const std::string& name) const {
        for (const XmlNode* node : parent.Children(kind)) {
            if (node->Attribute("name") == name) return *node;
        }
        ADD_FAILURE() << "no " << kind << " named " << name;
        return parent;
    }
    /// The members of a top-level element, or of a type, in their order.
    std::vector<const XmlNode*> MembersOfElement(const std::string& name) const {
        return Members(Named(Schema(0), kXs + "element", name).Child(kXs + "complexType"));
    }
    std::vector<const XmlNode*> MembersOfType(const std::string& name) const {
        return Members(Named(Schema(0), kXs + "complexType", name));
    }
    static std::vector<const XmlNode*> Members(const XmlNode& type) {
        return type.Child(kXs + "sequence").Children(kXs + "element");
    }
    Names Elements(const std::string& method) const { return NamesOf(MembersOfElement(method)); }

    /// Fails unless `answer` is built as the type of `declared` tells, element by element.
    void ExpectBuiltAs(const XmlNode& answer, const XmlNode& declared, const std::string& ns) const {
        EXPECT_EQ(answer.name, ns + "|" + declared.Attribute("name"));
        const auto inner = declared.Children(kXs + "complexType");
        const std::string type = declared.Attribute("type");
        if (type.starts_with("xs:")) {
            EXPECT_TRUE(answer.children.empty());
            return;
        }
        const auto members = inner.empty() ? MembersOfType(type.substr(4)) : Members(*inner.front());
        for (std::size_t i = 0; i < answer.children.size(); ++i) {
            const bool repeats = members.at(0)->Attribute("maxOccurs") == "unbounded";
            ExpectBuiltAs(answer.children[i], *members.at(repeats ? 0 : i), ns);
        }
    }
};

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
TEST_F(ServiceDescriptionTest, LetsEveryElementOfAFullCompactRequestArrive) {
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

TEST_F(ServiceDescriptionTest, DescribesTheAnswersThatTheProgramGives) {
    for (const std::string& method : MethodNames()) {
        const XmlNode answer = ParseXml(ResponseDocument(method, "OK\r\none\r\ntwo\r\n"));
        const XmlNode& body = answer.Child(kEnvelope + "Body");
        ASSERT_EQ(body.children.size(), 1u);
        ExpectBuiltAs(body.children[0], Named(Schema(0), kXs + "element", method + "Response"),
                      kServiceNamespace);
    }
    const XmlNode fault = ParseXml(FaultDocument("2004", "Missing URL", "host"));
    const XmlNode& detail = fault.Child(kEnvelope + "Body").Child(kEnvelope + "Fault").Child("detail");
    ASSERT_EQ(detail.children.size(), 1u);
    ExpectBuiltAs(detail.children[0], Schema(1).Child(kXs + "element"), kErrorNamespace);
}

// Clients that were built from an earlier description must find their order again.
TEST_F(ServiceDescriptionTest, KeepsTheOrderInWhichClientsHaveSent) {
    int compared = 0;
    for (const auto& file : std::filesystem::directory_iterator(REQUESTS_DIR)) {
        const std::string client = file.path().filename().string();
        if (!client.starts_with("gsoap-") && !client.starts_with("zeep-"))
            continue;  // others send in any order
        const XmlNode request = ParseXml(ReadFile(file.path().string()));
        const XmlNode& method = request.Child(kEnvelope + "Body").children.at(0);
        const Names described = Elements(method.name.substr(method.name.find('|') + 1));
        auto from = described.begin();
        for (const std::string& element : SentElements(method)) {
            from = std::find(from, described.end(), element);
            EXPECT_NE(from, described.end()) << client << " " << element;
        }
        ++compared;
    }
    EXPECT_GT(compared, 15);
}
