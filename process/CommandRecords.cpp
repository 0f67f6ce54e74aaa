#include "process/CommandRecords.h"

#include <algorithm>

using namespace quorbel;

MessagingParameters gMsgParameters;
AdministrationParameters gParameters;
AdminInfo g_tAdminInfo;
DepartmentInfo g_tDept;
UserInfo g_tUser;
UserGroupInfo g_tUserGroup;
ScheduleInfo g_tSchd;

namespace quorbel {

namespace {

constexpr std::size_t kPairSlots = 256;

std::span<const TextTriple> FilledPart(std::span<const TextTriple> slots) {
    std::size_t count = 0;
    while (count < slots.size() && slots[count] != TextTriple{}) ++count;
    return slots.first(count);
}

}  // namespace

std::span<const TextTriple> ActionsOf(const ExtraSlots& slots) {
    return FilledPart(std::span(slots).subspan(std::min(slots.size(), kCustomFieldSlots)));
}

std::span<const TextTriple> PairsOf(const ExtraSlots& slots) {
    return FilledPart(std::span(slots).first(std::min(slots.size(), kPairSlots)));
}

}  // namespace quorbel
