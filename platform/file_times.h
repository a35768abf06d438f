// The three times of a file to the nanosecond, whatever the system calls their fields.
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
