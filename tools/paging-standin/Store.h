#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/paging-standin/Form.h"

namespace standin {

/// What the server says to one command: the outcome, then what a query found.
struct Answer {
    std::string outcome;
    std::vector<std::string> items;

    /// As it travels: every line ends with CR LF, whatever the stored values hold.
    std::string ToText() const;
};

/// The paging server's directory and its jobs, in memory. Not thread-safe.
///
/// It checks no rights and keeps no password: it is there so that a client can see its commands take effect.
class Store {
public:
    Answer Execute(const Pairs& command);

private:
    enum class Kind { Group, Receiver, Department, User, UserGroup, Job };
    static constexpr std::array<std::string_view, 6> kKindNames = {"group", "receiver",  "department",
                                                                   "user",  "usergroup", "job"};
    /// What must be true of the key before a word is carried out.
    enum class Key { New, Existing, ExistingOrNone, Any };

    struct Record {
        Pairs fields;
        std::vector<std::string> items;  // a group's members, a job's history
    };
    using Records = std::map<std::string, Record>;

    struct Call {
        Kind kind;
        std::string_view keyLine;
        std::string key;
        const Pairs& command;
    };
    using Handler = Answer (Store::*)(const Call&);

    struct Word {
        std::string_view word;
        std::string_view keyLine;
        Kind kind;
        Key key;
        Handler handler;
    };
    static const Word kWords[];
    static const Word* FindWord(std::string_view word);

    Answer Add(const Call& call);
    Answer Modify(const Call& call);
    Answer Delete(const Call& call);
    Answer Query(const Call& call);
    Answer Link(const Call& call);
    Answer Unlink(const Call& call);
    Answer Send(const Call& call);
    Answer Confirm(const Call& call);
    Answer QueryHistory(const Call& call);
    Answer QueryJobGroup(const Call& call);

    Records& RecordsOf(Kind kind) { return records_[static_cast<std::size_t>(kind)]; }
    Record& RecordOf(const Call& call) { return RecordsOf(call.kind).at(call.key); }
    bool IsKnown(std::string_view kindName, const std::string& key) const;
    std::string NewJobId();

    std::array<Records, kKindNames.size()> records_;
    long lastJob_ = 100000;
};

}  // namespace standin
