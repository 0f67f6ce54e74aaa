#include "CVconThread.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

#include "CVException.h"
#include "NoCancellation.h"
#include "src/ThreadSignals.h"

using namespace quorbel;

namespace {

constexpr char kThreadUnit[] = "CVconThread";
constexpr char kCreateFailed[] = "Create Thread Failed";
constexpr char kInitializeFailed[] = "Initialize Thread Lib Failed";

constexpr struct {
    int code;
    const char* text;
} kCreateErrors[] = {
    {EAGAIN, "Out of resource"},
    {EINVAL, "Invalid attribute"},
    {EPERM, "Permission denied"},
};

std::string CreateErrorText(int code) {
    for (const auto& error : kCreateErrors) {
        if (error.code == code) return error.text;
    }
    return "Unknown Error [" + std::to_string(code) + "]";
}

/// The address sanitizer does not follow the unwinding of a cancelled thread: the marks of the frames that
/// are gone would look like errors in the frames that come to stand there.
void ForgetUnwoundFrames() {
#ifdef __SANITIZE_ADDRESS__
    constexpr std::size_t kReach = 64 * 1024;
    const char* here = static_cast<const char*>(__builtin_frame_address(0));
    __asan_unpoison_memory_region(here - kReach, kReach);
#endif
}

/// What Create hands to the new thread.
struct Launch {
    std::shared_ptr<ThreadControl> control;
    CVconDelegate* body;
    CVconThread* deleteAtEnd;  // null when body and thread object stay
};

/// The end of a thread, whether its body returned, called Exit or was cancelled.
class ThreadEnd {
public:
    explicit ThreadEnd(const Launch& launch) : launch_(launch) {}
    ~ThreadEnd() {
        // Nothing may stop the thread from here on: what follows must be done, and destructors cannot unwind.
        const NoCancellation untilTheEnd;
        ForgetUnwoundFrames();
        LeaveThreadSignals();
        {
            const std::lock_guard guard(launch_.control->mutex);
            launch_.control->state = ThreadControl::kEnded;
            launch_.control->ended.notify_all();
        }
        if (launch_.deleteAtEnd == nullptr) return;
        delete launch_.body;
        delete launch_.deleteAtEnd;
    }

    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;

private:
    const Launch& launch_;
};

extern "C" void* RunThread(void* argument) {
    const std::unique_ptr<Launch> launch(static_cast<Launch*>(argument));
    const ThreadEnd end(*launch);
    launch->control->kernelId = gettid();
    EnterThreadSignals(*launch->control);
    launch->body->DoWork(pthread_self());
    return nullptr;
}

int StartDetached(pthread_t& handle, Launch& launch) {
    pthread_attr_t attributes;
    if (const int code = pthread_attr_init(&attributes); code != 0) return code;
    int code = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (code == 0) code = pthread_create(&handle, &attributes, RunThread, &launch);
    pthread_attr_destroy(&attributes);
    return code;
}

}  // namespace

CVconThread::CVconThread(CVconDelegate* body, AtEnd atEnd) : body_(body), atEnd_(atEnd) {}

CVconThread::~CVconThread() = default;

void CVconThread::Create() {
    if (IsAlive())
        throw CVconException(gettid(), kThreadUnit, __LINE__, kCreateFailed, CreateErrorText(EINVAL));
    if (const int code = InstallThreadSignals(); code != 0) {
        RaiseConFailure(kThreadUnit, __LINE__, kInitializeFailed, code);
    }

    const auto control = std::make_shared<ThreadControl>();
    control_ = control;
    auto launch = std::make_unique<Launch>(
        Launch{control, body_, atEnd_ == AtEnd::DeleteBodyAndThread ? this : nullptr});
    ControlLock lock(*control);
    if (const int code = StartDetached(control->handle, *launch); code != 0) {
        throw CVconException(gettid(), kThreadUnit, __LINE__, kCreateFailed, CreateErrorText(code));
    }
    static_cast<void>(launch.release());  // the new thread owns it
    control->state = ThreadControl::kRunning;
    // Past the lock the thread may have ended and deleted this object.
}

void CVconThread::Send(int line, const char* failure, int (*send)(ThreadControl&)) {
    int code = ESRCH;
    if (control_ && control_->process.IsOurs()) {
        ControlLock lock(*control_);
        if (control_->IsAlive()) code = send(*control_);
    }
    if (code != 0)
        RaiseConFailure(kThreadUnit, line, failure, code, control_ ? control_->kernelId.load() : 0);
}

void CVconThread::Kill() {
    Send(__LINE__, "Kill Thread Failed", SendKill);
}

void CVconThread::Suspend() {
    Send(__LINE__, "Suspend Thread Failed", SendSuspend);
}

void CVconThread::Resume() {
    Send(__LINE__, "Resume Thread Failed", SendResume);
}

bool CVconThread::IsAlive() const {
    if (!control_ || !control_->process.IsOurs()) return false;
    ControlLock lock(*control_);
    return control_->IsAlive() && pthread_kill(control_->handle, 0) == 0;
}

bool CVconThread::IsSuspended() const {
    if (!control_ || !control_->process.IsOurs()) return false;
    ControlLock lock(*control_);
    return control_->IsAlive() && control_->paused.test();
}

bool CVconThread::WaitForEnd(std::chrono::milliseconds limit) const {
    if (!control_ || !control_->process.IsOurs()) return true;
    // The clock cannot count to the end of every limit.
    constexpr std::chrono::hours kForEver{24 * 365 * 100};
    ControlLock lock(*control_);
    const auto ended = [&] { return !control_->IsAlive(); };
    if (limit < kForEver) return control_->ended.wait_for(lock.Lock(), limit, ended);
    control_->ended.wait(lock.Lock(), ended);
    return true;
}

void CVconThread::UseSignals(int suspend, int resume) {
    if (const int code = ChooseThreadSignals(suspend, resume); code != 0) {
        RaiseConFailure(kThreadUnit, __LINE__, kInitializeFailed, code);
    }
}

pthread_t CVconThread::Self() {
    return pthread_self();
}

void CVconThread::Exit() {
    pthread_exit(nullptr);
}

bool CVconThread::KillRequested() {
    const ThreadControl* control = CurrentThreadControl();
    return control != nullptr && control->killed.test();
}
