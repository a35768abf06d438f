// One enumeration of the find calls, for what this folder looks for on disk.
#pragma once

#include <cstdint>

#include "border/guard.h"
#include "kvos/attributes.h"
#include "kvos/find.h"

namespace kv::naming {

/// Open as long as the object lives, and positioned on an entry.
class Enumeration {
public:
    explicit Enumeration(const char* pattern) : handle_(kvOSFindFirstFile(pattern, &entry_)) {}
    ~Enumeration() {
        if (!isOpen()) return;
        const border::KeepErrno keep;
        kvOSFindClose(handle_);
    }
    Enumeration(const Enumeration&) = delete;
    Enumeration& operator=(const Enumeration&) = delete;

    bool isOpen() const { return handle_ != KVFIND_INVALID; }
    const char* name() const { return entry_.szName; }
    bool isFolder() const { return (entry_.dwAttributes & KVATTR_DIRECTORY) != 0; }
    bool next() { return kvOSFindNextFile(handle_, &entry_) != 0; }

private:
    kvOSFindData entry_{};
    std::int64_t handle_;  // behind the entry, which is filled while the handle is made
};

}  // namespace kv::naming
