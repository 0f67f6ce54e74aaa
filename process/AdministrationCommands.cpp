#include "process/AdministrationCommands.h"

#include <algorithm>

#include "process/AdministrationLines.h"

namespace quorbel {

namespace {

using namespace administration_lines;

/// An object of the server's configuration: the words that act on it and its lines. `otherNames` come first,
/// each with its value of the request's other values.
struct Object {
    std::span<const char* const> words;
    std::span<const char* const> otherNames;
    std::span<const Line> lines;
};

constexpr const char* kGroupWords[] = {"addgroup",   "modgroup",        "delgroup",
                                       "querygroup", "addgrpassocdept", "querygroupmem"};
constexpr const char* kReceiverWords[] = {"addreceiver", "modreceiver", "delreceiver", "queryreceiver",
                                          "addreceiverassocdept"};
constexpr const char* kDepartmentWords[] = {"adddept", "moddept", "deldept", "querydept"};
constexpr const char* kUserWords[] = {"adduser", "moduser", "deluser", "queryuser"};
constexpr const char* kUserGroupWords[] = {"addusergroup", "modusergroup", "delusergroup", "queryusergroup"};
constexpr const char* kDepartmentPermissionWords[] = {"setusergroupdept"};
constexpr const char* kPermissionSetWords[] = {"setusergroupugp"};
constexpr const char* kMembershipWords[] = {"addrecvtogrp", "delrecvfromgrp", "addgrptogrp", "delgrpfromgrp"};
constexpr const char* kEnablingWords[] = {"enablegrp", "enablegrpmem"};
constexpr const char* kScheduleWords[] = {"addschdtoreceiver", "addschdtoonduty",     "modschdtoreceiver",
                                          "modschdtoonduty",   "delschdfromreceiver", "delschdfromonduty"};
constexpr const char* kTimeZoneWords[] = {"addtimezone", "modtimezone", "deltimezone"};
constexpr const char* kActionWords[] = {"addaction", "modaction", "delaction"};
constexpr const char* kMessengerWords[] = {"addmessenger", "modmessenger", "delmessenger"};
constexpr const char* kCarrierWords[] = {"addcarrier", "modcarrier", "delcarrier"};

constexpr Object kObjects[] = {
    {kGroupWords, {}, kGroupLines},
    {kReceiverWords, {}, kReceiverLines},
    {kDepartmentWords, {}, kDepartmentLines},
    {kUserWords, {}, kUserLines},
    {kUserGroupWords, {}, kUserGroupLines},
    {kDepartmentPermissionWords, {}, kDepartmentPermissionLines},
    {kPermissionSetWords, {}, kPermissionSetLines},
    {kMembershipWords, {}, kMembershipLines},
    {kEnablingWords, kEnablingNames, {}},
    {kScheduleWords, {}, kScheduleLines},
    {kTimeZoneWords, kTimeZoneNames, kTimeZoneLines},
    {kActionWords, kActionNames, {}},
    {kMessengerWords, kMessengerNames, {}},
    {kCarrierWords, kCarrierNames, {}},
};

bool Holds(std::span<const char* const> words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

void AddObjectLines(CommandParameters& command, const Object& object, const Source& source) {
    for (const char* name : object.otherNames) command.AddParameter(name, OtherValue(source, name));
    AddLines(command, object.lines, source);
}

}  // namespace

bool IsMembershipWord(const std::string& word) {
    return Holds(kMembershipWords, word);
}

CommandParameters BuildAdministrationCommand(const AdministrationRequest& request, std::size_t member) {
    const Source source{request, member};
    CommandParameters command;
    AddLines<Source>(command, kCommonLines, source);
    for (const Object& object : kObjects) {
        if (Holds(object.words, request.parameters->command)) AddObjectLines(command, object, source);
    }
    return command;
}

}  // namespace quorbel
