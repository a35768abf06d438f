// The control call of the log: files begun, ended and written by order of the host.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "border/text.h"
#include "diag/log_list.h"
#include "diag/log_names.h"
#include "errlog.h"
#include "kvos/attributes.h"

namespace kv::diag {
namespace {

using border::relaxedStore;

/// The names that a given path leads to, by the letter of the parts: a path that does not fit leaves none.
bool nameFileOfMode(LogState& log, const char* path) {
    const NameParts parts(path);
    *log.fullPath = '\0';
    return std::strlen(path) < border::kPathSize && stampBase(log.baseName, parts.base, NameStamp::seconds) &&
           parts.join(log.fullPath, log.baseName);
}

/// False when a name was given that does not fit.
bool beginFile(const char* name) {
    const bool given = name != nullptr && *name != '\0';
    if (given) readMaxLogFiles();
    const LockedLog log;
    const bool fits = !given || nameFileOfMode(*log, name);
    LogFile& file = log->file;
    file.beginCall();
    if (!file.isOpen() && *log->fullPath != '\0') file.open(log->fullPath);
    if (file.isOpen()) file.writeStart();
    relaxedStore(gfEnableLog, file.isOpen() ? 1u : 0u);
    log->lastReturned = nullptr;
    return fits;
}

void deleteFile() {
    const LockedLog log;
    log->file.close();
    if (*log->fullPath != '\0') unlink(log->fullPath);
    log->lastReturned = nullptr;
}

void restartList() {
    bool cleared = true;
    {
        const LockedLog log;
        cleared = clearList();
        log->nextNumber = 0;
    }
    if (!cleared) reportBrokenClearing();
}

/// A dump's name as far as it means anything: without blanks and control characters at its end.
std::string_view trimmed(std::string_view name) {
    while (!name.empty() && static_cast<unsigned char>(name.back()) <= ' ') name.remove_suffix(1);
    return name;
}

/// Where the list is dumped without a name. The caller's buffer gets the same path with a stamp, which is not opened.
bool makeUsualDumpPath(border::PathBuffer& path, char* callersName) {
    // One that can't be made has a name all the same; one whose name does not fit has none.
    if (kvOSGetConfigDir(path, 0) != 0 && *path == '\0') return false;
    if (!border::appendText(path, sizeof path, "debugout.log")) return false;
    const NameParts parts(path);
    border::PathBuffer base;
    border::PathBuffer stamped;
    if (!stampBase(base, parts.base, NameStamp::milliseconds) || !parts.join(stamped, base)) return false;
    if (callersName != nullptr) std::strcpy(callersName, stamped);
    return true;
}

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// False when the name does not fit. What can't be opened is passed over.
bool dumpList(char* name) {
    border::PathBuffer path;
    const std::string_view given = trimmed(border::orEmpty(name));
    if (given.empty() ? !makeUsualDumpPath(path, name) : !border::copyText(path, sizeof path, given)) return false;
    const LockedLog log;
    const std::unique_ptr<std::FILE, CloseStream> dump(std::fopen(path, "w+"));
    if (dump == nullptr) return true;
    // The column of times has a head and nothing below it. Meant, as is that no line ends but by its own text.
    std::fprintf(dump.get(), "%-8s  %-22s  %-s\n", "Error", "Time(ms)", "Message");
    for (const kvErrLogRecord* record = firstRecord(); record != nullptr; record = after(*record)) {
        std::fprintf(dump.get(), "%-8d  %-s", static_cast<int>(record->dwNumber), record->pText);
    }
    return true;
}

/// False when a name was given that does not fit.
bool setMode(std::int32_t mode, char* name) {
    switch (mode) {
        case KVERRLOG_MODE_CLEAR:
            restartList();
            return true;
        case KVERRLOG_MODE_FILE:
            return beginFile(name);
        case KVERRLOG_MODE_DELETE:
            deleteFile();
            return true;
        case KVERRLOG_MODE_DUMP:
            return dumpList(name);
        case KVERRLOG_MODE_NO_STANDARD_ERROR:
            relaxedStore(gdwOutputToStdDebug, 0u);
            return true;
        case KVERRLOG_MODE_STANDARD_ERROR:
            relaxedStore(gdwOutputToStdDebug, 1u);
            return true;
        default:
            return true;
    }
}

}  // namespace
}  // namespace kv::diag

std::uint32_t ErrLogSetMode(std::int32_t nMode, char* pName) {
    if (kv::border::relaxedLoad(gfEnableList) == 0) return 0;
    bool fits = true;
    {
        const kv::border::KeepErrno keep;
        kv::diag::makeList();
        fits = kv::diag::setMode(nMode, pName);
    }
    if (!fits) errno = ENAMETOOLONG;
    return 0;
}
