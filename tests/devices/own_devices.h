// A test's own "/dev", so that the literal names of devices can stand for pseudo-terminals without touching the
// machine's.
//
// The process goes into a mount namespace of its own and lays a scratch folder over "/dev", with the machine's
// pseudo-terminals in it; children of it see the same. Where the system does not permit that, why() says so, for
// GTEST_SKIP. Make it ahead of any thread.
#pragma once

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#if __has_include(<linux/sched.h>)  // namespaces are Linux's
#include <sched.h>
#include <sys/mount.h>
#endif

#include "support/scratch.h"

namespace kvtest {

class OwnDevices {
public:
    OwnDevices() { enter(); }
    ~OwnDevices() { leave(); }
    OwnDevices(const OwnDevices&) = delete;
    OwnDevices& operator=(const OwnDevices&) = delete;

    /// Empty where "/dev" is the test's own.
    const std::string& why() const { return why_; }

    /// Makes a device of that name, which is another one by its own name.
    static void name(const std::string& device, const std::string& shown) {
        std::filesystem::create_symlink(device, "/dev/" + shown);
    }

private:
#if __has_include(<linux/sched.h>)  // namespaces are Linux's
    // A user namespace would allow it to others as well, but in one a pseudo-terminal can't be opened twice.
    void enter() {
        std::filesystem::create_directory(scratch_ / "pts");
        std::ofstream(scratch_ / "null").close();
        std::filesystem::create_symlink("pts/ptmx", scratch_ / "ptmx");
        const auto bind = [](const std::string& from, const std::string& to) {
            return mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
        };
        if (unshare(CLONE_NEWNS) != 0) {
            why_ = std::string("no mounts of its own are permitted here: ") + std::strerror(errno);
        } else if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                   !bind("/dev/pts", scratch_ / "pts") || !bind("/dev/null", scratch_ / "null") ||
                   !bind(scratch_.path(), "/dev")) {
            why_ = std::string("nothing can be mounted here: ") + std::strerror(errno);
        }
    }

    /// Ahead of the removal of the scratch folder, which must not walk into the machine's devices.
    void leave() {
        if (!why_.empty()) return;
        umount2("/dev", MNT_DETACH);
        for (const char* shown : {"pts", "null"}) umount2((scratch_ / shown).c_str(), MNT_DETACH);
    }
#else
    void leave() {}
    void enter() { why_ = "this system has no mount namespaces"; }
#endif

    ScratchFolder scratch_;
    std::string why_;
};

}  // namespace kvtest
