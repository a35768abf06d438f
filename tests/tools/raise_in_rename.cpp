// Loaded ahead of the system's library into kv: a rename that a signal comes into, as it may at any moment.
#include <csignal>
#include <cstdio>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept {
    std::raise(SIGTERM);
    unlink(to);
    return link(from, to) == 0 ? unlink(from) : -1;
}
