#pragma once

#include <optional>

#include "process/CommandRecords.h"
#include "process/DeliveryJournal.h"
#include "soap/Methods.h"
#include "soap/RequestRecord.h"

namespace quorbel {

/// What the log names as the source of its entries about a request.
inline constexpr char kRequestSource[] = "CVsoap";

/// Turns a parsed request into its command record, runs soapProcess and so writes the answer. Returns 1 when
/// the request was handled, also by a fault about its address, and 0 when it was refused before that. The
/// event log must exist. Called once per run. `journal` is told what becomes of the request.
int TranslateRequest(const RequestRecord& record, DeliveryJournal& journal);

// What a parsed request means. Pure: each gives its record filled anew.

AdminInfo TranslateAdmin(const RequestRecord& record);
DepartmentInfo TranslateDepartment(const RequestRecord& record);
UserInfo TranslateUser(const RequestRecord& record);
UserGroupInfo TranslateUserGroup(const RequestRecord& record);
AdministrationParameters TranslateAdministration(const RequestRecord& record);
MessagingParameters TranslateMessaging(const RequestRecord& record);

/// How many bytes of a slot's text a command of this method keeps; nothing where only the limit of a posted line holds.
std::optional<std::size_t> WidthOf(const Method& method, Slot slot);

/// The boolean rule of the service: true when the element is there and its text does not begin with "fals" in
/// any letter case, nor with "0". So "no", an empty element and a leading blank are true. An absent element
/// is false.
bool IsTrue(const RequestRecord& record, Slot slot);

}  // namespace quorbel
