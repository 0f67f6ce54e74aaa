#include "process/MessagingTranslation.h"

#include <algorithm>

#include "process/RequestValues.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr char kQuickAction[] = "quick";

struct ActionCode {
    std::string_view action;
    int code;
};
constexpr ActionCode kActionCodes[] = {
    {kQuickAction, kQuickSend},
    {"query", kQueryStatus},
    {"confirm", kConfirm},
    {"queryjobhistory", kQueryHistory},
    {"querygroupmsg", kQueryGroupMessage},
};

int CommandCodeFor(const RequestRecord& record) {
    if (!record.Has(Slot::MessagingAction)) return kNoCommandCode;  // the request ended before its method did
    for (const ActionCode& row : kActionCodes) {
        if (EqualNoCase(record.Text(Slot::MessagingAction), row.action)) return row.code;
    }
    return kStandardSend;
}

struct ParameterText {
    Slot slot;
    std::string MessagingParameters::*field;
};
using P = MessagingParameters;
constexpr ParameterText kParameterTexts[] = {
    {Slot::Priority, &P::priority},
    {Slot::Message, &P::message},
    {Slot::Pin, &P::pin},
    {Slot::Url, &P::url},
    {Slot::Url2, &P::url2},
    {Slot::JobId, &P::jobId},
    {Slot::BackupCarrier, &P::alternateCarrier},
    {Slot::BackupPin, &P::alternatePin},
    {Slot::Sender, &P::sender},
    {Slot::Subject, &P::subject},
};

std::string PartOf(const RequestItem& item, std::size_t part) {
    return item[part] ? std::string(item[part]->Text()) : std::string();
}

/// Response actions are kept as (action, response, final) up to the first without a response.
void FillResponseActions(ExtraSlots& slots, const RequestItems& actions) {
    const std::size_t count = std::min(actions.count, kResponseActionSlots);
    for (std::size_t i = 0; i < count; ++i) {
        const RequestItem& item = actions.items[i];
        const std::string response = PartOf(item, 0);
        if (response.empty()) return;
        slots[kCustomFieldSlots + i] = ExtraTriple{PartOf(item, 1), response, PartOf(item, 2)};
    }
}

/// Custom fields are kept up to the first without a name. From the fifth on they overwrite response actions,
/// which is what clients that send that many have always got.
void FillCustomFields(ExtraSlots& slots, const RequestItems& fields) {
    const std::size_t count = std::min(fields.count, slots.size());
    for (std::size_t i = 0; i < count; ++i) {
        const RequestItem& item = fields.items[i];
        const std::string name = PartOf(item, 0);
        if (name.empty()) return;
        slots[i] = ExtraTriple{name, PartOf(item, 1), {}};
    }
}

}  // namespace

MessagingParameters TranslateMessaging(const RequestRecord& record) {
    MessagingParameters parameters;
    for (const ParameterText& text : kParameterTexts) CopyValue(parameters.*text.field, record, text.slot);

    std::string& recipient = parameters.recipients.emplace_back();
    CopyValue(recipient, record, Slot::Recipient);
    if (EqualNoCase(record.Text(Slot::MessagingAction), kQuickAction))
        CopyValue(recipient, record, Slot::Carrier);

    if (IsTrue(record, Slot::TimeStamp)) parameters.timeStamp = "true";
    if (IsTrue(record, Slot::ForwardReply)) parameters.forwardReply = "yes";
    parameters.commandCode = CommandCodeFor(record);
    FillResponseActions(parameters.extras, record.responseActions);
    FillCustomFields(parameters.extras, record.customFields);
    return parameters;
}

}  // namespace quorbel
