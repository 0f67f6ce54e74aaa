#include "tools/wsdl/ServiceDescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "soap/CVsoapParser.h"
#include "soap/ServiceNames.h"
#include "tests/support/Documents.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TempDir.h"
#include "tests/support/XmlTree.h"
#include "tools/wsdl/RequestElements.h"

using namespace quorbel;

namespace {

using testing::ElementsAre;
using Names = std::vector<std::string>;

const std::string kWsdl = "http://schemas.xmlsoap.org/wsdl/|";
const std::string kSoap = "http://schemas.xmlsoap.org/wsdl/soap/|";
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

TEST_F(ServiceDescriptionTest, CarriesTheNamespacesOfTheProgram) {
    EXPECT_EQ(root.name, kWsdl + "definitions");
    EXPECT_EQ(root.Attribute("targetNamespace"), kServiceNamespace);
    const char* const expected[] = {kServiceNamespace, kErrorNamespace};
    ASSERT_EQ(Part("types").children.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(Schema(i).Attribute("targetNamespace"), expected[i]);
        EXPECT_EQ(Schema(i).Attribute("elementFormDefault"), "qualified");
    }
}

TEST_F(ServiceDescriptionTest, NamesEveryMethodInEveryPart) {
    EXPECT_EQ(NamesOf(Part("portType").Children(kWsdl + "operation")), MethodNames());
    EXPECT_EQ(NamesOf(Part("binding").Children(kWsdl + "operation")), MethodNames());
    EXPECT_EQ(MethodNames().size(), 28u);
    EXPECT_EQ(root.Children(kWsdl + "message").size(), 2 * 28u + 1);
    EXPECT_EQ(Schema(0).Children(kXs + "element").size(), 2 * 28u);
}

TEST_F(ServiceDescriptionTest, DescribesEveryMethodAsWrappedDocument) {
    EXPECT_EQ(Part("binding").Child(kSoap + "binding").Attribute("style"), "document");
    for (const XmlNode* operation : Part("portType").Children(kWsdl + "operation")) {
        const std::string name = operation->Attribute("name");
        EXPECT_NE(operation->Child(kWsdl + "documentation").text, "") << name;
        const std::pair<std::string, std::string> directions[] = {{"input", name},
                                                                  {"output", name + "Response"}};
        for (const auto& [direction, element] : directions) {
            const std::string message = operation->Child(kWsdl + direction).Attribute("message").substr(4);
            const XmlNode& part = Named(root, kWsdl + "message", message).Child(kWsdl + "part");
            EXPECT_EQ(part.Attribute("name"), "parameters");
            EXPECT_EQ(part.Attribute("element"), "tns:" + element);
            const XmlNode& bound = Named(Part("binding"), kWsdl + "operation", name);
            EXPECT_EQ(bound.Child(kWsdl + direction).Child(kSoap + "body").Attribute("use"), "literal");
        }
    }
}

TEST_F(ServiceDescriptionTest, DeclaresTheFaultOfEveryMethod) {
    const XmlNode& part = Named(root, kWsdl + "message", "ServiceFault").Child(kWsdl + "part");
    EXPECT_EQ(part.Attribute("element"), "err:errorInfo");
    for (const std::string& name : MethodNames()) {
        const XmlNode& fault = Named(Part("portType"), kWsdl + "operation", name).Child(kWsdl + "fault");
        EXPECT_EQ(fault.Attribute("message"), "tns:ServiceFault");
        const XmlNode& bound = Named(Part("binding"), kWsdl + "operation", name).Child(kWsdl + "fault");
        EXPECT_EQ(bound.Child(kSoap + "fault").Attribute("use"), "literal");
        EXPECT_EQ(bound.Child(kSoap + "fault").Attribute("name"), fault.Attribute("name"));
    }
}

TEST_F(ServiceDescriptionTest, HoldsEachMethodsElementsAndNoOther) {
    for (const Method& method : Methods()) {
        std::set<std::string> known;
        for (const auto fields : {CommonFields(), method.fields}) {
            for (const Field& rule : fields) known.emplace(rule.element);
        }
        if (method.name == "AddUserGroup") known.erase("szURL2");
        std::set<std::string> described;
        for (const XmlNode* member : MembersOfElement(std::string(method.name))) {
            EXPECT_TRUE(described.insert(member->Attribute("name")).second) << member->Attribute("name");
            if (!member->Attribute("type").starts_with("tns:")) continue;
            for (const std::string& part : NamesOf(MembersOfType(member->Attribute("type").substr(4))))
                described.insert(part);
        }
        EXPECT_EQ(described, known) << method.name;
    }
}

TEST_F(ServiceDescriptionTest, PutsEveryElementWhereItKeepsTheOthers) {
    EXPECT_THAT(Elements("QueryGroup"),
                ElementsAre("szURL", "szAdminName", "szAdminPassword", "szGroupName", "szURL2"));
    EXPECT_THAT(Elements("SendStdMessage"),
                ElementsAre("szURL", "szAdminName", "szAdminPassword", "szRecipientName", "szJobID",
                            "nPriority", "bTimeStamp", "ResponseActionData", "CustomFieldData", "szMessage",
                            "szSender", "bForwardReply", "szSubject", "szURL2"));
    EXPECT_THAT(Elements("SetUserGroupDeptPermission"),
                ElementsAre("szURL", "szAdminName", "szAdminPassword", "szUserGroupName", "szDeptName",
                            "bSendReceiver", "bSendGroup", "bManageReceiver", "bViewReceiver", "bModifyGroup",
                            "bViewGroup", "bAddAndDeleteGroup", "szURL2"));
    const Names group = Elements("AddUserGroup");
    EXPECT_THAT(Names(group.end() - 6, group.end()),
                ElementsAre("bEnableConfidMode", "bSendreceWithoutDeptLicense", "bSendgrpWithoutDeptLicense",
                            "bRreceiverWithoutDeptLicense", "bAddgroupWithoutDeptLicense",
                            "bModgroupWithoutDeptLicense"));
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

TEST_F(ServiceDescriptionTest, UsesOnlySequencesAndNeverNil) {
    for (const XmlNode* node : Part("types").All()) {
        EXPECT_EQ(node->attributes.count("nillable"), 0u) << node->Attribute("name");
        EXPECT_NE(node->name, kXs + "all");
        EXPECT_NE(node->name, kXs + "choice");
    }
}

TEST_F(ServiceDescriptionTest, TypesEveryElementByItsFirstLetter) {
    const std::pair<char, std::string> types[] = {{'b', "xs:boolean"}, {'n', "xs:int"}, {'s', "xs:string"}};
    for (const Method& method : Methods()) {
        for (const XmlNode* member : MembersOfElement(std::string(method.name))) {
            const std::string name = member->Attribute("name");
            const bool isItem = name == "ResponseActionData" || name == "CustomFieldData";
            EXPECT_EQ(member->Attribute("maxOccurs"), name == "ResponseActionData" ? "256"
                                                      : isItem                     ? "4"
                                                                                   : "1");
            for (const auto& [letter, type] : types) {
                if (name[0] != letter) continue;
                EXPECT_EQ(member->Attribute("type"), name == "nTimeZone" ? "xs:string" : type) << name;
            }
        }
    }
}

TEST_F(ServiceDescriptionTest, EndsWithTheServiceAndTheAddressToFillIn) {
    const XmlNode& last = root.children.back();
    EXPECT_EQ(last.name, kWsdl + "service");
    const XmlNode& port = last.Child(kWsdl + "port");
    EXPECT_EQ(port.Child(kSoap + "address").Attribute("location"), kEndpointPlaceholder);
    EXPECT_EQ(port.Attribute("binding"), "tns:" + Part("binding").Attribute("name"));
    EXPECT_EQ(Part("binding").Attribute("type"), "tns:" + Part("portType").Attribute("name"));
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
