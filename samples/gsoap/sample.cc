// sample WSDL PAGING_SERVER: sends a message, asks about it, adds a group, and is refused once.
//
// The service's address is the one in the description that the classes were made from; to call another one,
// hand its URL to the proxy's constructor. Optional elements are pointers: those left null are not sent.

#include <iostream>
#include <stdexcept>

#include "QuorbelSoap.nsmap"
#include "soapQuorbelSoapProxy.h"

namespace {

bool yes = true, no = false;

std::string Trimmed(std::string text) {
    return text.erase(text.find_last_not_of("\r\n ") + 1);
}

void Check(QuorbelSoapProxy& service, int status) {
    if (status == SOAP_OK) return;
    const char* text = service.soap_fault_string();
    throw std::runtime_error(text ? text : "no answer");
}

std::string Send(QuorbelSoapProxy& service, const std::string& pager) {
    std::string ack = "ack", escalate = "escalate", ticket = "T-7";
    std::string text = "Pump 4 <hot> & \"loud\"", sender = "ops";
    int priority = 2;
    ns1__ResponseActionData first, second;
    first.szResponse = "1", first.szAction = &ack, first.bFinal = &yes;
    second.szResponse = "2", second.szAction = &escalate, second.bFinal = &no;
    ns1__CustomFieldData field;
    field.szFieldName = "ticket", field.szFieldValue = &ticket;

    _ns1__SendStdMessage message;
    message.szURL = pager;
    message.szRecipientName = "oncall";
    message.nPriority = &priority;
    message.bTimeStamp = &yes;
    message.ResponseActionData = {&first, &second};
    message.CustomFieldData = {&field};
    message.szMessage = &text;
    message.szSender = &sender;
    _ns1__SendStdMessageResponse sent;
    Check(service, service.SendStdMessage(&message, sent));
    return Trimmed(sent.SendStdMessageResult);
}

void Query(QuorbelSoapProxy& service, const std::string& pager, std::string job) {
    _ns1__QueryMessage question;
    question.szURL = pager;
    question.szJobID = &job;
    _ns1__QueryMessageResponse answer;
    Check(service, service.QueryMessage(&question, answer));
    const ns1__QueryResult& result = *answer.QueryMessageResult;
    std::cout << "query: " << result.szResponseMessage << '\n';
    if (!result.szResult) return;
    for (const std::string& line : result.szResult->string) std::cout << "  " << line << '\n';
}

std::string Add(QuorbelSoapProxy& service, const std::string& pager) {
    std::string name = "night", description = "Night shift";
    _ns1__AddGroup group;
    group.szURL = pager;
    group.szAdminName = "admin";
    group.szAdminPassword = "secret";
    group.szGroupName = &name;
    group.szDescription = &description;
    group.bAlertOwner = &yes;
    _ns1__AddGroupResponse added;
    Check(service, service.AddGroup(&group, added));
    return Trimmed(added.AddGroupResult);
}

void DeleteWithoutPassword(QuorbelSoapProxy& service, const std::string& pager) {
    std::string name = "night";
    _ns1__DeleteGroup group;
    group.szURL = pager;
    group.szAdminName = "admin";
    group.szGroupName = &name;
    _ns1__DeleteGroupResponse deleted;
    Check(service, service.DeleteGroup(&group, deleted));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string pager = argv[2];
    // Texts are UTF-8. Without this mode gSOAP takes them for Latin-1 and encodes them once more.
    QuorbelSoapProxy service(SOAP_C_UTFSTRING);
    try {
        const std::string sent = Send(service, pager);
        std::cout << "sent: " << sent << '\n';
        const std::size_t job = sent.find("job ") + 4;
        Query(service, pager, sent.substr(job, sent.find(' ', job) - job));
        std::cout << "added: " << Add(service, pager) << '\n';
        DeleteWithoutPassword(service, pager);
    } catch (const std::runtime_error& fault) {
        std::cout << "fault: " << fault.what() << '\n';
    }
}
