// The three times of a file to the nanosecond, whatever the system calls their fields.
//
// None of them tells when the file was made: the time of the status change, which some callers show as that, moves with
// every change of mode, owner or name.
#pragma once

#include <ctime>
#include <sys/stat.h>

namespace kv::platform {

struct FileTimes {
    timespec statusChange;
    timespec access;
    timespec modification;
};

FileTimes fileTimes(const struct stat& status) noexcept;

}  // namespace kv::platform
