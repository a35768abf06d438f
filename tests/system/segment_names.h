// Names of shared segments that no other test has, and whether one is there.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace kvtest {

/// Removed at the end, should it still be there. Short, since some systems take 31 bytes.
class OwnName {
public:
    explicit OwnName(const std::string& name) : path_("/kv" + std::to_string(getpid()) + name) {}
    ~OwnName() { shm_unlink(path_.c_str()); }
    OwnName(const OwnName&) = delete;
    OwnName& operator=(const OwnName&) = delete;

    const char* path() const { return path_.c_str(); }
    std::string withoutSlash() const { return path_.substr(1); }

private:
    std::string path_;
};

/// Also of one that may not be opened.
inline bool isThere(const OwnName& name) {
    const int descriptor = shm_open(name.path(), O_RDONLY, 0);
    if (descriptor >= 0) close(descriptor);
    return descriptor >= 0 || errno != ENOENT;
}

}  // namespace kvtest
