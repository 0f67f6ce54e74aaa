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

namespace {

std::string LineText(std::string_view name, std::string_view value) {
    std::string line;
    line.reserve(name.size() + value.size() + 1);
    return line.append(name).append("=").append(value);
}

}  // namespace

void CommandParameters::AddParameter(std::string_view name, std::string_view value) {
    if (!name.empty() && !value.empty()) Add(name, value);
}

void CommandParameters::SetParameter(std::size_t index, std::string_view name, std::string_view value) {
    if (index >= kMaxLines || name.empty() || value.empty()) return;
    if (lines.size() <= index) lines.resize(index + 1);
    lines[index] = LineText(name, value);
}

void CommandParameters::AddParameterPair(std::string_view name1, std::string_view value1,
                                         std::string_view name2, std::string_view value2) {
    if (name1.empty() || value1.empty() || name2.empty() || count + 2 > kMaxLines) return;
    Add(name1, value1);
    Add(name2, value2);
}

void CommandParameters::AddFlag(std::string_view name, int flag) {
    if (flag == 1) AddParameter(name, "on");
}

void CommandParameters::AddNumber(std::string_view name, int number) {
    AddParameter(name, std::to_string(number));
}

void CommandParameters::Add(std::string_view name, std::string_view value) {
    if (IsFull()) return;
    if (lines.size() <= count) lines.resize(count + 1);
    lines[count++] = LineText(name, value.substr(0, valueLimit));
}

}  // namespace quorbel
