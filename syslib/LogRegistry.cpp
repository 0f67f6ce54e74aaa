#include "syslib/LogRegistry.h"

#include <pthread.h>

#include <algorithm>

namespace quorbel {

LogRegistry& LogRegistry::OfProcess() {
    static auto* const registry = new LogRegistry;
    // A thread that is in here while another one forks must not leave the mutex taken in the child.
    [[maybe_unused]] static const int registered =
        pthread_atfork([] { registry->mutex_.lock(); }, [] { registry->mutex_.unlock(); },
                       [] { registry->mutex_.unlock(); });
    return *registry;
}

void LogRegistry::Add(const std::string& module, CVsysEventLogInterface* log) {
    const std::lock_guard lock(mutex_);
    auto* const entry = Entry(module);
    if (entry != nullptr && entry->second == nullptr) {
        entry->second = log;
    } else {
        logs_.emplace_back(module, log);
    }
    if (default_ == nullptr) default_ = log;
}

void LogRegistry::Remove(const CVsysEventLogInterface* log) {
    const std::lock_guard lock(mutex_);
    for (auto& entry : logs_) {
        if (entry.second == log) entry.second = nullptr;
    }
    if (default_ == log) default_ = nullptr;
}

CVsysEventLogInterface* LogRegistry::Default() {
    const std::lock_guard lock(mutex_);
    return default_;
}

CVsysEventLogInterface* LogRegistry::Find(const std::string& module) {
    const std::lock_guard lock(mutex_);
    const auto* const entry = Entry(module);
    return entry != nullptr ? entry->second : nullptr;
}

std::pair<std::string, CVsysEventLogInterface*>* LogRegistry::Entry(const std::string& module) {
    const auto found =
        std::find_if(logs_.begin(), logs_.end(), [&](const auto& entry) { return entry.first == module; });
    return found != logs_.end() ? &*found : nullptr;
}

}  // namespace quorbel
