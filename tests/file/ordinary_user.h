// Runs a piece of a test as a user whom permissions bind, also when the tests run as root.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace kvtest {

inline constexpr uid_t kUnknownUser = 54321;

/// Lets everyone pass through the folders of the scratch area down to `folder`.
inline void openToAll(const std::string& folder) {
    namespace fs = std::filesystem;
    for (fs::path at = folder; at.has_relative_path() && at != fs::temp_directory_path().parent_path().parent_path();
         at = at.parent_path()) {
        std::error_code ignored;
        fs::permissions(at,
                        fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec | fs::perms::group_read |
                            fs::perms::others_read,
                        ignored);
    }
}

/// What `body` says in a child process that has given up root, if it had it.
template <class Body>
bool trueAsOrdinaryUser(Body&& body) {
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(kUnknownUser) != 0 || setuid(kUnknownUser) != 0)) _exit(2);
        _exit(body() ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace kvtest
