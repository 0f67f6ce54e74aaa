#include "tools/paging-standin/Store.h"

#include <algorithm>

namespace standin {
namespace {

template <typename... Parts>
std::string Join(const Parts&... parts) {
    std::string text;
    (text.append(parts), ...);
    return text;
}

template <typename... Parts>
Answer Done(const Parts&... parts) {
    return {Join("OK ", parts...), {}};
}

template <typename... Parts>
Answer Refused(const Parts&... parts) {
    return {Join("ERROR ", parts...), {}};
}

bool IsKept(std::string_view name) {
    static constexpr std::string_view kTransport[] = {"cmd", "subcmd", "modid", "adminusername", "newname"};
    return !name.ends_with("password") &&
           std::find(std::begin(kTransport), std::end(kTransport), name) == std::end(kTransport);
}

Pairs KeptFields(const Pairs& command) {
    Pairs kept;
    for (const auto& pair : command) {
        if (IsKept(pair.first)) kept.push_back(pair);
    }
    return kept;
}

std::string MajorId(const std::string& jobId) {
    return jobId.substr(0, jobId.find('.'));
}

std::string Member(const Pairs& command) {
    return Join(Value(command, "mtype"), "=", Value(command, "mname"));
}

}  // namespace

const Store::Word Store::kWords[] = {
    {"addgroup", "groupname", Kind::Group, Key::New, &Store::Add},
    {"delgroup", "groupname", Kind::Group, Key::Existing, &Store::Delete},
    {"querygroup", "groupname", Kind::Group, Key::ExistingOrNone, &Store::Query},
    {"addreceiver", "rcv_name", Kind::Receiver, Key::New, &Store::Add},
    {"delreceiver", "rcv_name", Kind::Receiver, Key::Existing, &Store::Delete},
    {"queryreceiver", "rcv_name", Kind::Receiver, Key::ExistingOrNone, &Store::Query},
    {"adddept", "name", Kind::Department, Key::New, &Store::Add},
    {"deldept", "name", Kind::Department, Key::Existing, &Store::Delete},
    {"querydept", "name", Kind::Department, Key::ExistingOrNone, &Store::Query},
    {"adduser", "name", Kind::User, Key::New, &Store::Add},
    {"moduser", "name", Kind::User, Key::Existing, &Store::Modify},
    {"deluser", "name", Kind::User, Key::Existing, &Store::Delete},
    {"queryuser", "name", Kind::User, Key::ExistingOrNone, &Store::Query},
    {"addusergroup", "name", Kind::UserGroup, Key::New, &Store::Add},
    {"delusergroup", "name", Kind::UserGroup, Key::Existing, &Store::Delete},
    {"queryusergroup", "name", Kind::UserGroup, Key::ExistingOrNone, &Store::Query},
    {"setusergroupdept", "name", Kind::UserGroup, Key::Existing, &Store::Modify},
    {"setusergroupugp", "name", Kind::UserGroup, Key::Existing, &Store::Modify},
    {"addrecvtogrp", "grp_name", Kind::Group, Key::Existing, &Store::Link},
    {"addgrptogrp", "grp_name", Kind::Group, Key::Existing, &Store::Link},
    {"delrecvfromgrp", "grp_name", Kind::Group, Key::Existing, &Store::Unlink},
    {"delgrpfromgrp", "grp_name", Kind::Group, Key::Existing, &Store::Unlink},
    {"", "jobid", Kind::Job, Key::Any, &Store::Send},  // a send is the command that carries no word
    {"query_status", "jobid", Kind::Job, Key::ExistingOrNone, &Store::Query},
    {"queryjobhistory", "jobid", Kind::Job, Key::Existing, &Store::QueryHistory},
    {"queryjobgroupmsg", "jobmajorid", Kind::Job, Key::Any, &Store::QueryJobGroup},
    {"confirm", "jobid", Kind::Job, Key::Existing, &Store::Confirm},
};

std::string Answer::ToText() const {
    std::string text = OneLine(outcome) + "\r\n";
    for (const std::string& item : items) text += OneLine(item) + "\r\n";
    return text;
}

const Store::Word* Store::FindWord(std::string_view word) {
    const auto* found =
        std::find_if(std::begin(kWords), std::end(kWords), [&](const Word& row) { return row.word == word; });
    return found == std::end(kWords) ? nullptr : found;
}

Answer Store::Execute(const Pairs& command) {
    if (Value(command, "cmd") != "Cli") return Refused("cmd=Cli is missing");
    const Word* word = FindWord(Value(command, "subcmd"));
    if (word == nullptr) return Refused("unknown command: ", Value(command, "subcmd"));

    const Call call{word->kind, word->keyLine, Value(command, word->keyLine), command};
    const std::string_view kindName = kKindNames[static_cast<std::size_t>(call.kind)];
    const bool known = RecordsOf(call.kind).contains(call.key);
    const bool mustExist =
        word->key == Key::Existing || (word->key == Key::ExistingOrNone && !call.key.empty());
    if (call.key.empty() && (word->key == Key::New || mustExist)) return Refused(call.keyLine, " is missing");
    if (known && word->key == Key::New) return Refused(kindName, " ", call.key, " is already there");
    if (!known && mustExist) return Refused("no such ", kindName, ": ", call.key);

    return (this->*word->handler)(call);
}

Answer Store::Add(const Call& call) {
    RecordsOf(call.kind)[call.key].fields = KeptFields(call.command);
    return Done(call.key, " added");
}

Answer Store::Modify(const Call& call) {
    Records& records = RecordsOf(call.kind);
    const std::string newName = Value(call.command, "newname");
    if (records.contains(newName)) return Refused(newName, " is already there");

    Record& record = RecordOf(call);
    for (const auto& [name, value] : KeptFields(call.command)) SetValue(record.fields, name, value);
    if (!newName.empty()) {
        SetValue(record.fields, call.keyLine, newName);
        auto node = records.extract(call.key);
        node.key() = newName;
        records.insert(std::move(node));
    }
    return Done(call.key, " changed");
}

Answer Store::Delete(const Call& call) {
    RecordsOf(call.kind).erase(call.key);
    const std::string member = Join(kKindNames[static_cast<std::size_t>(call.kind)], "=", call.key);
    for (auto& [name, group] : RecordsOf(Kind::Group)) std::erase(group.items, member);
    return Done(call.key, " deleted");
}

Answer Store::Query(const Call& call) {
    Answer answer;
    if (call.key.empty()) {
        for (const auto& [key, record] : RecordsOf(call.kind)) {
            answer.items.push_back(Join(call.keyLine, "=", key));
        }
        answer.outcome = Join("OK ", std::to_string(answer.items.size()), " found");
        return answer;
    }
    const Record& record = RecordOf(call);
    for (const auto& [name, value] : record.fields) answer.items.push_back(Join(name, "=", value));
    answer.items.insert(answer.items.end(), record.items.begin(), record.items.end());
    answer.outcome = Join("OK ", call.key);
    return answer;
}

Answer Store::Link(const Call& call) {
    if (!IsKnown(Value(call.command, "mtype"), Value(call.command, "mname"))) {
        return Refused("no such member: ", Member(call.command));
    }
    std::vector<std::string>& members = RecordOf(call).items;
    if (std::find(members.begin(), members.end(), Member(call.command)) != members.end()) {
        return Refused(Member(call.command), " is already in ", call.key);
    }
    members.push_back(Member(call.command));
    return Done(Member(call.command), " added to ", call.key);
}

Answer Store::Unlink(const Call& call) {
    if (std::erase(RecordOf(call).items, Member(call.command)) == 0) {
        return Refused(Member(call.command), " is not in ", call.key);
    }
    return Done(Member(call.command), " removed from ", call.key);
}

Answer Store::Send(const Call& call) {
    std::string recipient = Value(call.command, "name");
    if (recipient.empty()) recipient = Value(call.command, "carrier_name");
    if (recipient.empty()) return Refused("name or carrier_name is missing");

    const std::string id = call.key.empty() ? NewJobId() : call.key;
    Record& job = RecordsOf(Kind::Job)[id];
    job.fields = KeptFields(call.command);
    SetValue(job.fields, call.keyLine, id);
    SetValue(job.fields, "status", "queued");
    job.items.push_back("event=queued for " + recipient);
    return Done("job ", id, " queued for ", recipient);
}

Answer Store::Confirm(const Call& call) {
    Record& job = RecordOf(call);
    SetValue(job.fields, "status", "confirmed");
    job.items.emplace_back("event=confirmed");
    return Done("job ", call.key, " confirmed");
}

Answer Store::QueryHistory(const Call& call) {
    return {"OK job " + call.key, RecordOf(call).items};
}

Answer Store::QueryJobGroup(const Call& call) {
    Answer answer{"OK jobs of " + call.key, {}};
    for (const auto& [id, job] : RecordsOf(Kind::Job)) {
        if (MajorId(id) != MajorId(call.key)) continue;
        answer.items.push_back(Join("jobid=", id, " status=", Value(job.fields, "status")));
    }
    return answer.items.empty() ? Refused("no such job: ", call.key) : answer;
}

bool Store::IsKnown(std::string_view kindName, const std::string& key) const {
    for (std::size_t kind = 0; kind < kKindNames.size(); ++kind) {
        if (kKindNames[kind] == kindName) return records_[kind].contains(key);
    }
    return false;
}

std::string Store::NewJobId() {
    std::string id;
    do {
        id = std::to_string(++lastJob_) + ".1";
    } while (RecordsOf(Kind::Job).contains(id));
    return id;
}

}  // namespace standin
