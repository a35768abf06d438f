// What a log file is called.
#pragma once

#include <cstdint>

#include "border/text.h"
#include "diag/log_list.h"

namespace kv::diag {

/// The time that is put behind the base of a name, to the second or to the millisecond.
enum class NameStamp { seconds, milliseconds };

/// A path in its parts, as kvOSSplitPath finds them.
struct NameParts {
    border::PathBuffer drive;
    border::PathBuffer directory;
    border::PathBuffer base;
    char extension[256];

    /// A path that does not fit has empty parts.
    explicit NameParts(const char* path);

    /// The path with another base; empty, and false, if it does not fit.
    bool join(border::PathBuffer& path, const char* otherBase) const;
};

/// A base name with its stamp, the usual name standing for one that is missing; empty, and false, if it does not fit.
bool stampBase(border::PathBuffer& stamped, const char* base, NameStamp stamp);

/// Names the file by the configured path, gszLogName. A name that does not fit is none.
void nameLogFile(LogState& log);

/// While a file of that name exists, gives it the next number.
void findUnusedName(LogState& log);

/// The setting "MaxLogFiles", which is kept for when it is missing. Not with the list's lock held.
std::uint32_t readMaxLogFiles();

}  // namespace kv::diag
