// sample WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.
// Status 1 when the message was not sent, or something else failed.
//
// The service's address is the one in the description that the classes were made from; to call another one,
// hand its URL to the proxy's constructor. Optional elements are pointers: those left null are not sent.

#include <iostream>
#include <stdexcept>

#include "QuorbelSoap.nsmap"
#include "soapQuorbelSoapProxy.h"

namespace {

bool yes = true, no = false;

struct Pagers {
    std::string first, second;
    std::string* Second() { return second.empty() ? nullptr : &second; }
};

std::string Trimmed(std::string text) {
    return text.erase(text.find_last_not_of("\r\n ") + 1);
}

void Check(QuorbelSoapProxy& service, int status) {
    if (status == SOAP_OK) return;
    const char* text = service.soap_fault_string();
    throw std::runtime_error(text ? text : "no answer");
}

std::string Send(QuorbelSoapProxy& service, Pagers& pagers) {
    std::string ack = "ack", escalate = "escalate", ticket = "T-7";
    std::string text = "Pump 4 <hot> & \"loud\"", sender = "ops";
    int priority = 2;
    ns1__ResponseActionData first, second;
    first.szResponse = "1", first.szAction = &ack, first.bFinal = &yes;
    second.szResponse = "2", second.szAction = &escalate, second.bFinal = &no;
    ns1__CustomFieldData field;
    field.szFieldName = "ticket", field.szFieldValue = &ticket;

    _ns1__SendStdMessage message;
    message.szURL = pagers.first;
    message.szRecipientName = "oncall";
    message.nPriority = &priority;
    message.bTimeStamp = &yes;
    message.ResponseActionData = {&first, &second};
    message.CustomFieldData = {&field};
    message.szMessage = &text;
    message.szSender = &sender;
    message.szURL2 = pagers.Second();
    _ns1__SendStdMessageResponse sent;
    Check(service, service.SendStdMessage(&message, sent));
    return Trimmed(sent.SendStdMessageResult);
}

void Query(QuorbelSoapProxy& service, Pagers& pagers, std::string job) {
    _ns1__QueryMessage question;
    question.szURL = pagers.first;
    question.szJobID = &job;
    question.szURL2 = pagers.Second();
    _ns1__QueryMessageResponse answer;
    Check(service, service.QueryMessage(&question, answer));
    const ns1__QueryResult& result = *answer.QueryMessageResult;
    std::cout << "query: " << result.szResponseMessage << '\n';
    if (!result.szResult) return;
    for (const std::string& line : result.szResult->string) std::cout << "  " << line << '\n';
}

std::string Add(QuorbelSoapProxy& service, Pagers& pagers) {
    std::string name = "night", description = "Night shift";
    _ns1__AddGroup group;
    group.szURL = pagers.first;
    group.szAdminName = "admin";
    group.szAdminPassword = "secret";
    group.szGroupName = &name;
    group.szDescription = &description;
    group.bAlertOwner = &yes;
    group.szURL2 = pagers.Second();
    _ns1__AddGroupResponse added;
    Check(service, service.AddGroup(&group, added));
    return Trimmed(added.AddGroupResult);
}

void DeleteWithoutPassword(QuorbelSoapProxy& service, Pagers& pagers) {
    std::string name = "night";
    _ns1__DeleteGroup group;
    group.szURL = pagers.first;
    group.szAdminName = "admin";
    group.szGroupName = &name;
    _ns1__DeleteGroupResponse deleted;
    Check(service, service.DeleteGroup(&group, deleted));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    Pagers pagers = {argv[2], argc > 3 ? argv[3] : ""};
    // Texts are UTF-8. Without this mode gSOAP takes them for Latin-1 and encodes them once more.
    QuorbelSoapProxy service(SOAP_C_UTFSTRING);
    bool refusalExpected = false;
    try {
        const std::string text = Send(service, pagers);
        // A message that could not be delivered is no fault: the text then is the transport's. The paging server names
        // a job.
        const std::size_t job = text.find("job ");
        if (job == text.npos) {
            std::cout << "not sent: " << text << '\n';
            return 1;
        }
        std::cout << "sent: " << text << '\n';
        Query(service, pagers, text.substr(job + 4, text.find(' ', job + 4) - job - 4));
        std::cout << "added: " << Add(service, pagers) << '\n';
        refusalExpected = true;
        DeleteWithoutPassword(service, pagers);
    } catch (const std::runtime_error& fault) {
        std::cout << "fault: " << fault.what() << '\n';
        return refusalExpected ? 0 : 1;
    }
}
