// A message on its way into the log: into the file first, if one is to be written, and then into the list.
//
// Memory is taken and the settings are read before the list's lock is; the order of the steps under it is the contract,
// the gaps in the numbers and the results included.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "diag/log_list.h"
#include "diag/log_names.h"
#include "diag/log_results.h"
#include "diag/settings_once.h"
#include "errlog.h"
#include "kvos/memory.h"

namespace kv::diag {
namespace {

bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

/// The text as it is kept: without up to two line ends at its end. A single character stays.
std::string_view kept(std::string_view text) {
    if (text.size() == 1) return text;
    for (int i = 0; i < 2 && !text.empty() && isLineEnd(text.back()); ++i) text.remove_suffix(1);
    return text;
}

/// A copy of the text as it is kept, or null: for want of memory, or for an empty text.
char* copyOf(std::string_view text) {
    if (text.empty() || text.size() > 0xFFFFFFFF - 2) return nullptr;
    auto* copy = static_cast<char*>(KVAlloc(static_cast<std::uint32_t>(text.size() + 2)));
    if (copy == nullptr) return nullptr;
    const std::string_view shorter = kept(text);
    std::memcpy(copy, shorter.data(), shorter.size());
    copy[shorter.size()] = '\0';
    return copy;
}

struct FreeByLibrary {
    void operator()(void* block) const { KVFree(block); }
};
using OwnedText = std::unique_ptr<char, FreeByLibrary>;
using OwnedRecord = std::unique_ptr<kvErrLogRecord, FreeByLibrary>;

/// The history comes first in a file. Only a record that asks for a line of its own gets one.
void writeList(LogFile& file) {
    for (const kvErrLogRecord* record = firstRecord(); record != nullptr; record = after(*record)) {
        if (*record->pText == '\n') {
            file.writeStamped(record->dwNumber, record->pText);
        } else {
            file.writeContinuation(record->pText);
        }
    }
}

/// Told whatever gdwOutputToStdDebug says: nothing else would show that the log is lost.
void reportUnopenedFile(int error, const char* path) {
    std::fprintf(stderr, "ERROR: Unable to open log file for output (%d): %s", error, path);
}

void openFile(LogState& log) {
    findUnusedName(log);
    if (!log.file.open(log.fullPath)) {
        border::relaxedStore(gfEnableLog, 0u);
        reportUnopenedFile(errno, log.fullPath);
        return;
    }
    log.file.writeStart();
    border::relaxedStore(gfEnableLog, 1u);
    writeList(log.file);
}

/// Whether a file is open for the message, which may open one or another one.
bool isFileReady(LogState& log) {
    LogFile& file = log.file;
    if (file.isOpen() && file.isFull()) file.close();
    if (file.isOpen()) return true;
    const bool named = border::relaxedLoad(gfErrLogListValid) != 0;
    if (*log.fullPath == '\0') {
        if (!named && gErrLogList.count < kListCapacity) return false;
        if (settingsAreBeingRead()) return false;  // the configured name may be half written
        nameLogFile(log);
    }
    if (*log.fullPath != '\0' && named) openFile(log);
    return file.isOpen();
}

/// Writes the message, whose text ends in a zero, or counts it as a repeat of the last one kept.
std::uint32_t toFile(LogState& log, std::uint32_t code, std::string_view text) {
    std::uint32_t outcome = kLogStored;
    kvErrLogRecord* last = lastRecord();
    if (last != nullptr && last->dwCode == code && std::strcmp(text.data(), last->pText) == 0) {
        ++last->dwRepeats;
        last->qwReserved = 0;
        return kLogSwallowed;
    }
    if (last != nullptr && last->dwRepeats != 0) {
        outcome = last->dwRepeats + 1;
        log.file.wrapIfFar(log.nextNumber);
        log.file.writeRunEnd(outcome);
    }
    log.file.wrapIfFar(log.nextNumber);
    log.file.writeMessage(log.nextNumber, text);
    return outcome;
}

/// The number of a message that is not a repeat, whether or not it is kept.
std::uint32_t takeNumber(LogState& log, std::uint32_t arrival_ms) {
    if (log.nextNumber == 0) log.startTime_ms = arrival_ms;
    return log.nextNumber++;
}

/// The oldest record of the full list, off the list.
OwnedRecord takeOldest(LogState& log) {
    kvErrLogRecord* oldest = firstRecord();
    if (log.lastReturned == oldest) log.lastReturned = nullptr;
    unlinkHead();
    return OwnedRecord(oldest);
}

std::uint32_t put(std::uint32_t code, std::string_view text) {
    const Moment arrival = wallClock();
    OwnedText copy(copyOf(text));
    readSettingsOnce();
    OwnedText oldText;  // freed after the lock is given back
    const LockedLog log;
    // The record of the message that goes serves for the one that comes, so that memory is needed up to the capacity.
    const bool full = gErrLogList.count >= kListCapacity;
    OwnedRecord record(full ? nullptr : static_cast<kvErrLogRecord*>(KVAlloc(sizeof(kvErrLogRecord))));
    if (!full && record == nullptr) return kLogFailed;
    std::uint32_t outcome = kLogStored;
    if (border::relaxedLoad(gfEnableLog) != 0) {
        log->file.beginCall();
        if (isFileReady(*log)) outcome = toFile(*log, code, text);
        if (outcome == kLogSwallowed) return outcome;
    }
    const std::uint32_t number = takeNumber(*log, arrival.count_ms());
    if (copy == nullptr) return outcome;
    if (full) {
        record = takeOldest(*log);
        oldText.reset(record->pText);
    }
    *record = {.node = {},
               .dwNumber = number,
               .dwNodeType = KVERRLOG_NODE_TYPE,
               .dwCode = code,
               .dwMs = arrival.count_ms(),
               .dwRepeats = 0,
               .pText = copy.release(),
               .qwReserved = 0};
    linkTail(*record.release());
    return outcome;
}

}  // namespace
}  // namespace kv::diag

std::uint32_t ErrLogPut(std::uint32_t dwCode, const char* pText) {
    using namespace kv::diag;
    const kv::border::KeepErrno keep;
    makeList();
    if (kv::border::relaxedLoad(gfEnableList) == 0) return kLogStored;
    if (pText == nullptr) return kLogFailed;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto outcome = kv::border::atBorder(std::optional<std::uint32_t>(),
                                                  [&] { return std::optional(put(dwCode, std::string_view(pText))); });
        if (outcome) return *outcome;
    }
    return kLogFailed;
}
