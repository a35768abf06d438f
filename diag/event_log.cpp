// The event log: operational events as lines of comma-separated values.
//
// A file is begun by the first event, and by the one behind a full file; an event never opens one that kvEventLog_Close
// has closed half full. The state is for one thread and has no lock.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "border/guard.h"
#include "border/text.h"
#include "diag/event_log_files.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/naming.h"

namespace kv::diag {
namespace {

constexpr std::int32_t kLinesOfFile = 2500;

// The names and the fields of a line don't agree: programs that read the files depend on both as they are.
constexpr std::string_view kHeader = "Date-Time, Timecode, Code, SubCode, Event, Description, Details\n";

std::int64_t ghEventLog = KVFILE_INVALID;
border::PathBuffer gszEventLogPath = "";
std::uint32_t sdwLastEventCode = 0;
std::uint32_t sdwLastEventSubCode = 0;
std::int32_t giNextLineNumber = 0;
std::int32_t giNextFileNumber = 0;

bool isOpen() { return ghEventLog != KVFILE_INVALID; }

void close() {
    if (!isOpen()) return;
    kvOSCloseFile(ghEventLog);
    ghEventLog = KVFILE_INVALID;
    gszEventLogPath[0] = '\0';
}

bool write(std::string_view text) {
    std::uint32_t written = 0;
    return kvOSWriteFile(ghEventLog, text.data(), static_cast<std::uint32_t>(text.size()), &written, nullptr) != 0;
}

/// Opens what is there for both directions; only an open for writing alone makes what is missing.
std::int64_t openForAppending(const char* path) {
    const std::uint32_t access = kvOSFileExists(path) != 0 ? KVFILE_READ | KVFILE_WRITE : KVFILE_WRITE;
    return kvOSCreateFile(path, access, 1, nullptr, KVFILE_OPEN_ALWAYS, 0, 0);
}

/// False for a path that does not fit; whether the file could be opened is told by isOpen alone.
bool setName(const char* path) {
    close();
    if (std::strcmp(path, gszEventLogPath) != 0 && !border::copyPath(gszEventLogPath, path)) return false;
    ghEventLog = openForAppending(gszEventLogPath);
    if (!isOpen()) return true;
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(ghEventLog, &size);
    kvOSSeekEnd(ghEventLog);
    if (size == 0) write(kHeader);
    return true;
}

void beginFile(const EventTime& now) {
    std::vector<std::string> names;
    giNextFileNumber = static_cast<std::int32_t>(findEventFiles(names) + 1);
    MakeDirStructure(KVEVENTLOG_FOLDER);
    thinEventFiles(names);
    setName(eventFilePath(giNextFileNumber, now).c_str());
}

/// The texts of an event, none of them null.
struct EventTexts {
    std::string_view timecode, name, description, details;
};

std::string lineOf(const EventTime& now, const EventTexts& texts) {
    char codes[32];
    std::snprintf(codes, sizeof codes, ",0x%08X,0x%08X,", sdwLastEventCode, sdwLastEventSubCode);
    std::string line = now.date + "-" + now.time;
    line.append(",").append(texts.timecode).append(",").append(texts.name).append(codes);
    line.append(texts.description).append(",").append(texts.details).append("\n");
    return line;
}

void countLine() {
    if (++giNextLineNumber < kLinesOfFile) return;
    giNextLineNumber = 0;
    close();
}

/// Meant: the line is the format, so that a "%" in it is a conversion. What it converts is not there.
void passOn(const std::string& line) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    ErrOut(line.c_str());
#pragma GCC diagnostic pop
}

void logEvent(const EventTexts& texts) {
    const EventTime now = eventTime();
    if (!isOpen() && giNextLineNumber == 0) beginFile(now);
    const std::string line = lineOf(now, texts);
    if (write(line)) countLine();
    passOn(line);
}

}  // namespace
}  // namespace kv::diag

namespace diag = kv::diag;
namespace border = kv::border;

std::uint32_t kvEventLog_SetName(const char* pPath) {
    bool fits = true;
    {
        const border::KeepErrno keep;
        border::atBorder(0, [&] {
            if (pPath == nullptr) {
                diag::close();
            } else {
                fits = diag::setName(pPath);
            }
            return 0;
        });
    }
    if (!fits) errno = ENAMETOOLONG;
    return 0;
}

std::uint32_t kvEventLog_Close() {
    const border::KeepErrno keep;
    return border::atBorder(0u, [] {
        diag::close();
        return 0u;
    });
}

const char* kvEventLog_GetName() { return diag::gszEventLogPath; }

std::uint32_t kvEventLog_FindFiles(std::vector<std::string>* pNames) {
    if (pNames == nullptr) return 0;
    const border::KeepErrno keep;
    return border::atBorder(0u, [&] { return diag::findEventFiles(*pNames); });
}

std::uint32_t kvEventLog_Event(std::uint32_t dwCode, std::uint32_t dwSubCode, const char* pName,
                               const char* pDescription, const char* pDetails, const char* pTimecode) {
    const border::KeepErrno keep;
    diag::sdwLastEventCode = dwCode;
    diag::sdwLastEventSubCode = dwSubCode;
    return border::atBorder(0u, [&] {
        using border::orEmpty;
        diag::logEvent({orEmpty(pTimecode), orEmpty(pName), orEmpty(pDescription), orEmpty(pDetails)});
        return 0u;
    });
}

std::uint32_t kvEventLog_GetLastEventCode() { return diag::sdwLastEventCode; }

std::uint32_t kvEventLog_GetLastEventSubCode() { return diag::sdwLastEventSubCode; }
