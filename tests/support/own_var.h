// A test's own "/var", so that the literal folders below it can be written to without touching the machine's.
//
// The process goes into a user and a mount namespace of its own and lays a scratch folder over "/var"; children of it
// see the same. Where the system does not permit that, why() says so, for GTEST_SKIP. Make it ahead of any thread, and
// keep the test's own files elsewhere.
#pragma once

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <unistd.h>

#if __has_include(<linux/sched.h>)  // namespaces are Linux's
#include <sched.h>
#include <sys/mount.h>
#endif

#include "support/scratch.h"

namespace kvtest {

class OwnVar {
public:
    OwnVar() { enter(); }

    /// Empty where "/var" is the test's own.
    const std::string& why() const { return why_; }

private:
#if __has_include(<linux/sched.h>)  // namespaces are Linux's
    static bool tell(const char* file, const std::string& text) {
        const int descriptor = open(file, O_WRONLY);
        if (descriptor < 0) return false;
        const bool told = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        close(descriptor);
        return told;
    }

    void enter() {
        const std::string user = "0 " + std::to_string(geteuid()) + " 1";
        const std::string group = "0 " + std::to_string(getegid()) + " 1";
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            why_ = std::string("no namespace of its own is permitted here: ") + std::strerror(errno);
        } else if (!tell("/proc/self/setgroups", "deny") || !tell("/proc/self/uid_map", user) ||
                   !tell("/proc/self/gid_map", group)) {
            why_ = std::string("no user can be mapped here: ") + std::strerror(errno);
        } else if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                   mount(scratch_.path().c_str(), "/var", nullptr, MS_BIND, nullptr) != 0) {
            why_ = std::string("nothing can be mounted here: ") + std::strerror(errno);
        }
    }
#else
    void enter() { why_ = "this system has no mount namespaces"; }
#endif

    ScratchFolder scratch_;
    std::string why_;
};

}  // namespace kvtest
