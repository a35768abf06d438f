#include "file/s3/executor.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

#include "border/guard.h"

namespace kv::file::s3 {
namespace {

constexpr std::chrono::seconds kLongestWait{2};

/// The jobs that run. Never destroyed, since the last of them may end after everything else.
struct InFlight {
    std::mutex lock;
    std::condition_variable changed;
    std::size_t count = 0;
    std::atomic<bool> ending = false;

    /// False once the process ends.
    bool enter() {
        const std::lock_guard locked(lock);
        if (ending) return false;
        ++count;
        return true;
    }
    void leave() {
        const std::lock_guard locked(lock);
        --count;
        changed.notify_all();
    }
};

InFlight& inFlight() {
    static InFlight& jobs = *new InFlight;
    return jobs;
}

/// Made with the first job, so that it ends ahead of everything that was there before.
class EndOfProcess {
public:
    EndOfProcess() = default;
    ~EndOfProcess() {
        // A child of a fork has the count, but none of the threads.
        if (getpid() != process_) return;
        InFlight& jobs = inFlight();
        std::unique_lock locked(jobs.lock);
        jobs.ending = true;
        jobs.changed.wait_for(locked, kLongestWait, [&] { return jobs.count == 0; });
    }
    EndOfProcess(const EndOfProcess&) = delete;
    EndOfProcess& operator=(const EndOfProcess&) = delete;

private:
    pid_t process_ = getpid();
};

using Job = std::function<void()>;

void* runJob(void* argument) {
    std::unique_ptr<Job> job(static_cast<Job*>(argument));
    (*job)();
    job.reset();
    inFlight().leave();
    return nullptr;
}

/// Signals are the host's and come to its own threads: they are blocked before the thread can exist.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_;
};

int createThread(void* job) {
    pthread_attr_t attributes;
    if (const int error = pthread_attr_init(&attributes); error != 0) return error;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    const BlockedSignals blocked;
    pthread_t thread;
    const int error = pthread_create(&thread, &attributes, &runJob, job);
    pthread_attr_destroy(&attributes);
    return error;
}

}  // namespace

int startDetached(std::function<void()> job) {
    static const EndOfProcess endOfProcess;
    auto owned = std::make_unique<Job>(std::move(job));
    if (!inFlight().enter()) return ECANCELED;
    const int error = createThread(owned.get());
    if (error == 0) {
        static_cast<void>(owned.release());
    } else {
        inFlight().leave();
    }
    return error;
}

const std::atomic<bool>& isProcessEnding() noexcept { return inFlight().ending; }

void yieldToTheEnd() noexcept {
    if (!inFlight().ending) return;
    inFlight().leave();
    for (;;) pause();
}

}  // namespace kv::file::s3
