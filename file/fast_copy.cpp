// The copy on two threads: one fills the one buffer while the other empties the other.
//
// Who may touch a buffer is told by its state; what two threads look at is read and written atomically here, though the
// record holds plain words. The copy ends only when both threads have: they work on the job's memory and on its files.
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <type_traits>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "file/copied.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/thread.h"
#include "kvos/time.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::uint32_t kAlignment = 8192;

enum State : std::uint32_t { kFree = 0, kReading = 1, kFull = 2, kWriting = 4 };

constexpr useconds_t kBufferPause_us = 1000;
constexpr useconds_t kPollPause_us = 20000;
constexpr useconds_t kFailurePause_us = 20000;
constexpr useconds_t kNoWriterPause_us = 100000;

// ---- what the threads share --------------------------------------------------------------------------------------

template <class Word>
Word load(Word& word) {
    return std::atomic_ref<Word>(word).load();
}

template <class Word>
void store(Word& word, std::type_identity_t<Word> value) {
    std::atomic_ref<Word>(word).store(value);
}

void setState(kvOSFastCopyJob& job, std::uint32_t buffer, std::uint32_t state) {
    std::atomic_ref(job.states[buffer]).exchange(state);
}

template <class Condition>
void pauseUntil(useconds_t pause_us, Condition isMet) {
    while (!isMet()) usleep(pause_us);
}

// ---- the reader --------------------------------------------------------------------------------------------------

/// One block; false when it was the last, or failed.
bool readBlock(kvOSFastCopyJob& job, std::uint32_t buffer, std::uint64_t& total) {
    setState(job, buffer, kReading);
    std::uint32_t got = 0;
    if (kvOSReadFile(job.source, job.buffers[buffer], job.blockSize, &got, nullptr) == 0) {
        store(job.failure, -1);
        return false;
    }
    store(job.offsets[buffer], total);
    store(job.lengths[buffer], got);
    total += got;
    setState(job, buffer, kFull);
    // Without a limit the total is always past it, so that the first block is the last. Meant.
    return got == job.blockSize && total < job.limit && load(job.readDone) == 0;
}

void readAll(kvOSFastCopyJob& job) {
    std::uint64_t total = 0;
    for (std::uint32_t buffer = 0; load(job.readDone) == 0; buffer ^= 1) {
        pauseUntil(kBufferPause_us, [&] { return load(job.states[buffer]) == kFree || load(job.readDone) != 0; });
        if (load(job.readDone) != 0 || !readBlock(job, buffer, total)) break;
    }
    store(job.bytesRead, total);
    store(job.readDone, 1);
}

// ---- the writer --------------------------------------------------------------------------------------------------

/// What a destination for whole blocks refused goes the way of a last block, which takes any length. Only the last
/// block does: the writer stops behind it, and what the other buffer held would be lost.
bool writeRefusedBlock(kvOSFastCopyJob& job, std::uint32_t buffer, std::uint32_t length) {
    usleep(kFailurePause_us);
    if (load(job.readDone) == 0 || load(job.lengths[buffer ^ 1]) != 0) return false;
    const auto offset = static_cast<std::int64_t>(load(job.offsets[buffer]));
    return writeTail(job.destination, job.destinationName, offset, job.buffers[buffer], length);
}

void tellProgress(const kvOSFastCopyJob& job, std::uint64_t total) {
    if (job.progressBytes != nullptr) border::relaxedStore(*job.progressBytes, total);
    if (job.progressPermille != nullptr && job.limit != 0) {
        border::relaxedStore(*job.progressPermille, permilleOf(total, job.limit));
    }
}

/// One block, which may hold nothing; false when the writer is to stop.
bool writeNextBlock(kvOSFastCopyJob& job, std::uint32_t buffer, std::uint64_t& total) {
    pauseUntil(kBufferPause_us, [&] { return load(job.states[buffer]) == kFull || load(job.readDone) != 0; });
    const bool wasLast = load(job.readDone) != 0;
    const std::uint32_t length = load(job.lengths[buffer]);
    if (length == 0 && wasLast) return false;
    if (length != 0) {
        setState(job, buffer, kWriting);
        const bool written = writeBlock(job.destination, job.buffers[buffer], length);
        if (!written && !writeRefusedBlock(job, buffer, length)) {
            store(job.failure, -1);
            return false;
        }
        total += length;
        if (!written) return false;
    }
    tellProgress(job, total);
    store(job.lengths[buffer], 0);
    setState(job, buffer, kFree);
    return load(job.writeDone) == 0;
}

void writeAll(kvOSFastCopyJob& job) {
    std::uint64_t total = 0;
    if (load(job.writeDone) == 0) {
        for (std::uint32_t buffer = 0; writeNextBlock(job, buffer, total);) buffer ^= 1;
    }
    store(job.bytesWritten, total);
    store(job.writeDone, 1);
}

// ---- the caller --------------------------------------------------------------------------------------------------

void stopBoth(kvOSFastCopyJob& job) {
    store(job.readDone, 1);
    store(job.writeDone, 1);
}

/// A thread of the job. It is waited for, since what it works on goes with the copy.
class Worker {
public:
    Worker(kvOSThreadStart body, kvOSFastCopyJob& job) : thread_(kvOSCreateThread(nullptr, 0, body, &job)) {}
    ~Worker() {
        const border::KeepErrno keep;
        pauseUntil(kBufferPause_us, [&] { return !isRunning(); });
        kvOSCloseThread(thread_);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    bool isStarted() const { return thread_ != nullptr; }

private:
    bool isRunning() const {
        std::uint32_t code = 0;
        kvOSGetExitCodeThread(thread_, &code);
        return code != 0;
    }

    kvOSThreadRec* thread_;
};

/// Runs both threads to their end. False for a failure.
bool runThreads(kvOSFastCopyJob& job) {
    {
        const Worker reader(_kvOSCopyFileFastRead, job);
        const Worker writer(_kvOSCopyFileFastWrite, job);
        if (!reader.isStarted() || !writer.isStarted()) {
            store(job.failure, -1);
            stopBoth(job);
            usleep(kNoWriterPause_us);
        }
        pauseUntil(kPollPause_us,
                   [&] { return load(job.failure) != 0 || (load(job.readDone) != 0 && load(job.writeDone) != 0); });
        stopBoth(job);
        if (load(job.failure) != 0) usleep(kFailurePause_us);
    }
    return job.failure == 0;
}

struct FreeJob {
    void operator()(kvOSFastCopyJob* job) const {
        for (void* allocation : job->allocations) KVFree(allocation);
        KVFree(job);
    }
};
using Job = std::unique_ptr<kvOSFastCopyJob, FreeJob>;

Job newJob() {
    void* const memory = KVAlloc(sizeof(kvOSFastCopyJob));
    if (memory != nullptr) std::memset(memory, 0, sizeof(kvOSFastCopyJob));
    return Job(static_cast<kvOSFastCopyJob*>(memory));
}

bool allocateBuffers(kvOSFastCopyJob& job) {
    for (std::uint32_t i = 0; i < 2; ++i) {
        job.allocations[i] = KVAlloc(job.blockSize + kAlignment);
        if (job.allocations[i] == nullptr) return false;
        const auto address = reinterpret_cast<std::uintptr_t>(job.allocations[i]);
        job.buffers[i] = reinterpret_cast<void*>((address + kAlignment - 1) / kAlignment * kAlignment);
    }
    return true;
}

std::uint32_t blockSizeOf(std::uint32_t flags) {
    constexpr std::uint32_t kSizes[] = {1 << 20, 1 << 16, 1 << 17, 1 << 19, 1 << 20, 1 << 22, 1 << 23};
    const std::uint32_t selector = flags & 0xF;
    return selector < std::size(kSizes) ? kSizes[selector] : 1 << 24;
}

struct FastCopy {
    const char* from;
    const char* to;
    std::uint32_t flags;
    std::uint64_t* progressBytes;
    std::uint32_t* elapsed_ms;
    std::uint32_t* progressPermille;
    std::uint32_t start_ms = kvOSGetMs();

    bool isLimited() const { return (flags & KVCOPY_COUNT_GIVEN) != 0; }
    std::uint64_t limit() const { return isLimited() && progressBytes != nullptr ? *progressBytes : 0; }
    void tellElapsed() const {
        if (elapsed_ms != nullptr) border::relaxedStore(*elapsed_ms, kvOSGetMs() - start_ms);
    }
};

/// By the everyday copy. Its result is turned round. Meant.
std::uint32_t copyPlainly(const FastCopy& copy) {
    const std::uint32_t result = kvOSCopyFile(copy.from, copy.to, 1);
    copy.tellElapsed();
    if (copy.progressBytes != nullptr) border::relaxedStore(*copy.progressBytes, kvOSGetFileSizeName(copy.from));
    return result != 0 ? kFailed : 0;
}

/// The job's words as the caller gets to see them.
void tellEnd(const FastCopy& copy, const kvOSFastCopyJob& job) {
    copy.tellElapsed();
    if (copy.progressBytes != nullptr) border::relaxedStore(*copy.progressBytes, job.bytesWritten);
    if (copy.progressPermille != nullptr) border::relaxedStore(*copy.progressPermille, std::uint32_t{1000});
}

std::uint32_t copyOnThreads(const FastCopy& copy) {
    const Job job = newJob();
    if (job == nullptr) return kFailed;
    const Copied source(kvOSCreateFile(copy.from, KVFILE_READ, 1, nullptr, KVFILE_OPEN_EXISTING, kUnbuffered, 0));
    if (!source.isOpen()) return kFailed;
    Copied destination(kvOSCreateFile(copy.to, KVFILE_WRITE, kShareAll, nullptr, KVFILE_CREATE_NEW, kUnbuffered, 0));
    if (!destination.isOpen()) return kFailed;
    job->source = source.handle();
    job->destination = destination.handle();
    job->destinationName = copy.to;
    job->blockSize = blockSizeOf(copy.flags);
    job->limit = copy.limit();
    job->progressBytes = copy.progressBytes;
    job->progressPermille = copy.progressPermille;
    if (!allocateBuffers(*job)) return kFailed;
    const bool succeeded = runThreads(*job);
    tellEnd(copy, *job);
    if (!succeeded) errno = EIO;  // the reason is the thread's, and went with it
    return succeeded && destination.close() ? 0 : kFailed;
}

std::uint32_t copyFast(const FastCopy& copy) {
    if (copy.from == nullptr || copy.to == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    if (kvOSFileExists(copy.to) != 0) {
        if ((copy.flags & KVCOPY_KEEP_EXISTING) != 0 || std::strcmp(copy.from, copy.to) == 0) {
            errno = EEXIST;
            return kFailed;
        }
        kvOSDeleteFile(copy.to);
    }
    const std::uint32_t way = copy.isLimited() ? 0 : copy.flags >> 28;
    if (way == 0) return copyOnThreads(copy);
    return way <= 2 ? copyPlainly(copy) : 0;  // with nothing copied. Meant.
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

uint32_t kvOSCopyFileFast(const char* pSource, const char* pDestination, uint32_t dwFlags, uint64_t* pqwProgressBytes,
                          uint32_t* pdwElapsedMs, uint32_t* pdwProgressPermille) {
    return file::copyAtBorder(file::kFailed, [&] {
        return file::copyFast({pSource, pDestination, dwFlags, pqwProgressBytes, pdwElapsedMs, pdwProgressPermille});
    });
}

// Outside the guard: ending the thread unwinds it like an exception, and nothing below the call owns anything.
void* _kvOSCopyFileFastRead(void* pJob) {
    if (pJob == nullptr) return nullptr;
    file::readAll(*static_cast<kvOSFastCopyJob*>(pJob));
    kvOSExitThread(0);
}

void* _kvOSCopyFileFastWrite(void* pJob) {
    if (pJob == nullptr) return nullptr;
    file::writeAll(*static_cast<kvOSFastCopyJob*>(pJob));
    kvOSExitThread(0);
}
