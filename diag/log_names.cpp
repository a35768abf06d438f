// Names are the configured base and a stamp of the raw fields of the time: the year counts from 1900, the month from 0.
// That is meant, and differs from the stamps of lines.
//
// The calls here are for the start of a program. They take the list's lock for a moment only, to store what they found:
// settings and directories are read without it.
#include "diag/log_names.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "diag/local_time.h"
#include "diag/settings_once.h"
#include "errlog.h"
#include "kvcfg.h"
#include "kvos/locator.h"
#include "kvos/naming.h"
#include "kvos/time.h"

namespace kv::diag {
namespace {

constexpr const char* kUsualBase = "korvane_log_";
constexpr const char* kUsualExtension = ".log";

std::uint32_t sMaxLogFiles = 10000;

/// A blank counts as nothing, so that a name which begins with one is replaced as well. Meant.
bool countsAsEmpty(const char* base) { return *base == '\0' || *base == ' '; }

/// Names that are ready to be taken.
struct NewNames {
    border::PathBuffer stampedBase;
    border::PathBuffer fullPath;

    /// 0, or the error number that tells why there are none.
    int make(const NameParts& parts, const char* base) {
        border::PathBuffer joined;
        if (!stampBase(stampedBase, base, NameStamp::milliseconds)) return ENAMETOOLONG;
        if (!parts.join(joined, stampedBase)) return ENAMETOOLONG;
        return kvOSFullPath(fullPath, joined, sizeof fullPath) != nullptr ? 0 : errno;
    }

    void store(LogState& log) const {
        std::strcpy(log.baseName, stampedBase);
        std::strcpy(log.fullPath, fullPath);
    }
};

/// 0, or the error number for names that can't be had, everything then being as it was.
int nameByPath(const char* path) {
    border::PathBuffer configured;
    if (!border::copyText(configured, sizeof configured, path)) return ENAMETOOLONG;
    const NameParts parts(configured);
    NewNames names;
    if (const int error = names.make(parts, parts.base); error != 0) return error;
    const LockedLog log;
    std::strcpy(gszLogName, configured);
    names.store(*log);
    return 0;
}

/// As nameByPath.
int nameByBase(const char* base) {
    NameParts parts(gszLogName);
    if (*parts.extension == '\0') std::strcpy(parts.extension, kUsualExtension);
    border::PathBuffer configured;
    border::PathBuffer prefix;
    const bool fits = parts.join(configured, base) && border::copyText(prefix, sizeof prefix, parts.drive) &&
                      border::appendText(prefix, sizeof prefix, parts.directory);
    if (!fits) return ENAMETOOLONG;
    NewNames names;
    if (const int error = names.make(parts, base); error != 0) return error;  // before anything is deleted
    kvErrLog_RotateFiles(prefix, 0, parts.extension, readMaxLogFiles());
    // The stamp is of now, not of before the rotation.
    if (const int error = names.make(parts, base); error != 0) return error;
    const LockedLog log;
    std::strcpy(gszLogName, configured);
    names.store(*log);
    border::relaxedStore(gfErrLogListValid, std::uint8_t{1});
    return 0;
}

}  // namespace

NameParts::NameParts(const char* path) { kvOSSplitPath(path, drive, directory, base, extension); }

bool NameParts::join(border::PathBuffer& path, const char* otherBase) const {
    kvOSMakePath(path, drive, directory, otherBase, extension);
    return *path != '\0';
}

bool stampBase(border::PathBuffer& stamped, const char* base, NameStamp stamp) {
    const std::tm now = localFields(wallClock());
    char text[128];
    border::formatText(text, sizeof text, "_%04d-%02d-%02dT%02d-%02d-%02d", now.tm_year, now.tm_mon, now.tm_mday,
                       now.tm_hour, now.tm_min, now.tm_sec);
    if (stamp == NameStamp::milliseconds) {
        char milliseconds[8];
        border::formatText(milliseconds, sizeof milliseconds, "-%03u", kvOSGetMs() % 1000);
        border::appendText(text, sizeof text, milliseconds);
    }
    if (border::copyText(stamped, sizeof stamped, countsAsEmpty(base) ? kUsualBase : base) &&
        border::appendText(stamped, sizeof stamped, text)) {
        return true;
    }
    *stamped = '\0';
    return false;
}

void nameLogFile(LogState& log) {
    const NameParts parts(gszLogName);
    *log.fullPath = '\0';
    if (stampBase(log.baseName, parts.base, NameStamp::milliseconds)) parts.join(log.fullPath, log.baseName);
}

void findUnusedName(LogState& log) {
    while (access(log.fullPath, F_OK) == 0) {
        ++log.fileCount;
        const NameParts parts(log.fullPath);
        char suffix[16];
        border::formatText(suffix, sizeof suffix, "_%03d", static_cast<int>(log.fileCount));
        border::PathBuffer numbered;
        border::copyText(numbered, sizeof numbered, log.baseName);
        // A name without room for its number is no name: nothing is overwritten for want of one.
        *log.fullPath = '\0';
        if (border::appendText(numbered, sizeof numbered, suffix)) parts.join(log.fullPath, numbered);
    }
}

std::uint32_t readMaxLogFiles() {
    std::uint32_t value = border::relaxedLoad(sMaxLogFiles);
    if (kvCFGValueDword(KVSTDCONFIG, "ZMW\\Advanced\\Debug", "MaxLogFiles", &value, 0) == 0) {
        border::relaxedStore(sMaxLogFiles, value);
    }
    return border::relaxedLoad(sMaxLogFiles);
}

}  // namespace kv::diag

namespace diag = kv::diag;
using kv::border::relaxedLoad;

std::uint32_t ErrLogSetName(const char* pPath) {
    if (relaxedLoad(gfEnableList) == 0) return 0;
    ErrLogClose();
    if (pPath == nullptr) return 0;
    int error = 0;
    {
        const kv::border::KeepErrno keep;
        diag::readSettingsOnce();
        error = diag::nameByPath(pPath);
    }
    if (error != 0) errno = error;
    return 0;
}

std::uint32_t ErrLogSetFileName(const char* pBase) {
    if (relaxedLoad(gfEnableList) == 0) return 0;
    ErrLogClose();
    if (pBase == nullptr) return 0;
    int error = 0;
    {
        const kv::border::KeepErrno keep;
        if (*gszLogName == '\0') diag::readSettings();
        error = diag::nameByBase(pBase);
    }
    if (error != 0) errno = error;
    return 0;
}

std::uint32_t ErrLogGetName(char* pBuffer, std::uint32_t fSet) {
    if (fSet != 0) return ErrLogSetName(pBuffer);
    if (pBuffer == nullptr) return 0;
    const diag::LockedLog log;
    std::strcpy(pBuffer, log->fullPath);
    return 0;
}
