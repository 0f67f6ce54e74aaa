#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

class CVsysEventLogInterface;

namespace quorbel {

/// The event logs of this process by module name, in the order of their creation, and the default one. It
/// points to the logs and owns none. Any thread may call.
class LogRegistry {
public:
    /// The one of this process; never deleted, so that logs work while static objects are destroyed.
    static LogRegistry& OfProcess();

    /// The first log of an empty default place becomes the default. A module whose log is gone takes its old
    /// place again: Find stops there.
    void Add(const std::string& module, CVsysEventLogInterface* log);
    /// Leaves the log's place empty.
    void Remove(const CVsysEventLogInterface* log);

    /// Null when there is none.
    CVsysEventLogInterface* Default();
    /// The first entry of that name, letter for letter; null when there is none or its log is gone.
    CVsysEventLogInterface* Find(const std::string& module);

private:
    std::pair<std::string, CVsysEventLogInterface*>* Entry(const std::string& module);

    std::mutex mutex_;
    std::vector<std::pair<std::string, CVsysEventLogInterface*>> logs_;
    CVsysEventLogInterface* default_ = nullptr;
};

}  // namespace quorbel
