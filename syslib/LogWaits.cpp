#include "syslib/LogWaits.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>

#include "syslib/LogReport.h"

namespace quorbel {

namespace {

using std::chrono::microseconds;

constexpr microseconds::rep kNoLimit = std::numeric_limits<microseconds::rep>::max();
constexpr std::chrono::milliseconds kFirstPatience{60'000};
constexpr std::chrono::milliseconds kPatienceAfterAWaitInVain{990};

std::atomic<microseconds::rep> leftOfRun{kNoLimit};

}  // namespace

void BeginLogRun() {
    leftOfRun = microseconds(kLogWaitOfARun).count();
}

microseconds LogWaitLeft(microseconds wanted) {
    return std::min(wanted, microseconds(std::max<microseconds::rep>(leftOfRun, 0)));
}

void CountLogWait(microseconds waited, const std::string& identity) {
    if (leftOfRun == kNoLimit) return;
    const microseconds::rep before = leftOfRun.fetch_sub(waited.count());
    if (before <= 0 || before > waited.count()) return;
    ReportLogFailure("CVsysEventLogInterface::Write", identity,
                     "This request has waited a minute for its logs and waits no longer");
}

void WaitForLog(microseconds wait, const std::string& identity) {
    std::this_thread::sleep_for(wait);
    CountLogWait(wait, identity);
}

std::chrono::milliseconds LogPatience::Next() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        LogWaitLeft(waitedInVain_ ? kPatienceAfterAWaitInVain : kFirstPatience));
}

}  // namespace quorbel
