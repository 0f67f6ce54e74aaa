#include <algorithm>

#include "soap/Envelopes.h"
#include "tools/wsdl/RequestElements.h"
#include "tools/wsdl/ServicePage.h"

namespace quorbel {

namespace {

struct SampleValue {
    std::string_view element;
    std::string_view value;
};

/// Elements that are not here are left out of the samples.
constexpr SampleValue kSampleValues[] = {
    {"szURL", "http://pager.example/cgi/cmd"},
    {"szAdminName", "admin"},
    {"szAdminPassword", "secret"},
    {"szRecipientName", "oncall"},
    {"szMessage", "Pump 4 is hot: 95 degrees & rising"},
    {"szSender", "control room"},
    {"szSubject", "Alarm"},
    {"szCarrierName", "Carrier"},
    {"szPIN", "5550100"},
    {"szJobID", "100001.1"},
    {"szReceiverName", "oncall"},
    {"szGroupName", "night"},
    {"szMasterGroupName", "everybody"},
    {"szDescription", "Night shift"},
    {"szDepartmentName", "Plant"},
    {"szDeptName", "Plant"},
    {"szUserName", "operator1"},
    {"szUserGroup", "operators"},
    {"szUserGroupName", "operators"},
    {"szUpgName", "standard"},
    {"szFirstName", "Ada"},
    {"szLastName", "Example"},
};

const SampleValue* SampleOf(std::string_view element) {
    const auto* row =
        std::find_if(std::begin(kSampleValues), std::end(kSampleValues),
                     [element](const SampleValue& sample) { return sample.element == element; });
    return row == std::end(kSampleValues) ? nullptr : row;
}

/// A new message gets its job's number from the paging server.
bool IsLeftOut(const Method& method, std::string_view element) {
    return element == "szJobID" && method.name.starts_with("Send");
}

}  // namespace

std::string SampleRequest(const Method& method) {
    const std::string name(method.name);
    std::string body;
    for (const Field& rule : RequestElementsOf(method)) {
        const SampleValue* const sample = SampleOf(rule.element);
        if (sample == nullptr || IsLeftOut(method, rule.element)) continue;
        const std::string element(rule.element);
        body.append("<").append(element).append(">").append(EscapeXml(sample->value));
        body.append("</").append(element).append(">");
    }
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope xmlns:soap=\"") +
           kSoapEnvelopeNamespace + "\"><soap:Body><" + name + " xmlns=\"" + kServiceNamespace + "\">" +
           body + "</" + name + "></soap:Body></soap:Envelope>";
}

}  // namespace quorbel
