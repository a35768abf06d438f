// The list of the last messages, its lock, and all that this lock guards besides.
//
// LOCK ORDER. The list's lock is the innermost of the process but for that of the allocator: whoever holds it calls
// nothing that reads or writes settings, and nothing that waits for another thread. What a call of the log needs from
// the settings (all of them at the first message, "MaxLogFiles") and from the file layer, which may ask the settings
// for a redirect (the configuration directory), is fetched before the lock is taken; under it files are tested for by
// the system's own calls. The store in its turn reports only after it has given its own lock back. So each of the two
// may be taken from under nothing but a host's locks, and neither waits for the other.
//
// The lock is made once and outlives the list: a thread that waits for it while ErrLogClose ends the list finds a lock
// that is whole, and begins the next list.
#pragma once

#include <cstddef>
#include <cstdint>

#include "border/text.h"
#include "diag/local_time.h"
#include "diag/log_file.h"
#include "errlog.h"

namespace kv::diag {

inline constexpr std::uint32_t kListCapacity = 999;

/// What the list's lock guards besides the list.
struct LogState {
    LogFile file;
    border::PathBuffer baseName;   // of the log file, with its stamp and without directory and extension
    border::PathBuffer fullPath;   // of the log file; empty: it has no name
    std::uint32_t nextNumber;      // of the message to come
    std::uint32_t startTime_ms;    // wall clock at message number 0
    std::uint32_t fileCount;       // the suffix that a successor got last; counts on over all files of the process
    kvErrLogRecord* lastReturned;  // where the reader of the list stands; null: at its beginning
};

/// Whether a list is made because there is none.
enum class Missing { make, leave };

/// Holds the list's lock for a scope, which is the one way to the state.
class LockedLog {
public:
    explicit LockedLog(Missing missing = Missing::make) noexcept;
    ~LockedLog();
    LockedLog(const LockedLog&) = delete;
    LockedLog& operator=(const LockedLog&) = delete;

    /// Whether there is a list; always, where it was to be made.
    bool hasList() const noexcept;

    /// Marks the list, which must be empty, as not made.
    void endList() noexcept;

    LogState* operator->() const noexcept;
    LogState& operator*() const noexcept;
};

inline kvErrLogRecord* recordOf(d_ListNode* node) noexcept { return reinterpret_cast<kvErrLogRecord*>(node); }
inline kvErrLogRecord* firstRecord() noexcept { return recordOf(gErrLogList.head); }
inline kvErrLogRecord* lastRecord() noexcept { return recordOf(gErrLogList.tail); }
inline kvErrLogRecord* after(const kvErrLogRecord& record) noexcept { return recordOf(record.node.next); }
inline kvErrLogRecord* before(const kvErrLogRecord& record) noexcept { return recordOf(record.node.prev); }
static_assert(offsetof(kvErrLogRecord, node) == 0);

/// Makes the list if there is none.
void makeList() noexcept;

/// Lists a record that is on no list, last. The list's lock is held: d_ListAddTail, which may be called without it,
/// would take it once more, and that is most of what a message costs.
void linkTail(kvErrLogRecord& record) noexcept;

/// Takes the first record off, the list's lock being held.
void unlinkHead() noexcept;

/// Frees a record that is on no list, and its text. Null is left alone.
void freeRecord(kvErrLogRecord* record);

/// Frees all records, from the tail. Does nothing while gfEnableList is 0 or there is no list. False when it broke off,
/// which is to be told by reportBrokenClearing once the lock is given back: a report made under it could wait for the
/// settings.
bool clearList();
void reportBrokenClearing();

}  // namespace kv::diag
