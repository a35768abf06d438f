// Whose processes end with them.
#include "servers/child_process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace kvtest;

/// A pipe whose writing end processes inherit: it reads as ended when all of them are gone.
struct Lifeline {
    Lifeline() { EXPECT_EQ(pipe(ends), 0); }
    ~Lifeline() { close(ends[0]); }

    bool endsWithoutUs() {
        close(ends[1]);
        pollfd ended{ends[0], POLLIN, 0};
        return poll(&ended, 1, 30000) == 1 && (ended.revents & POLLHUP) != 0;
    }

    int ends[2];
};

TEST(ChildProcess, EndsWithItsOwner) {
    Lifeline lifeline;
    {
        ChildProcess child({"cat"}, "messages");
        child.write("one\ntwo\n");
        EXPECT_EQ(child.readLine("no echo"), "one");
        EXPECT_EQ(child.readLine("no echo"), "two");
        EXPECT_TRUE(child.isRunning());
    }
    EXPECT_TRUE(lifeline.endsWithoutUs());
}

TEST(ChildProcess, EndsWhenItsOwnersProcessIsKilled) {
    Lifeline lifeline;
    const pid_t owner = fork();
    if (owner == 0) {
        ChildProcess child({"cat"}, "messages");
        child.write("up\n");
        child.readLine("no echo");
        raise(SIGKILL);
    }
    int status = 0;
    EXPECT_EQ(waitpid(owner, &status, 0), owner);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(lifeline.endsWithoutUs());
}

TEST(ChildProcess, AProgramThatIsNotThereIsTold) {
    try {
        ChildProcess child({"no-such-program"}, "messages");
        FAIL() << "it runs";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "cannot run no-such-program: No such file or directory (scripts/setup installs it)");
    }
}

TEST(ChildProcess, WhatAProgramSaidBeforeItEndedIsTold) {
    ChildProcess child({"sh", "-c", "echo no port >&2; exit 1"}, "messages");
    try {
        child.readLine("it does not listen");
        FAIL() << "a line came";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "it does not listen (sh): no port\n");
    }
}

}  // namespace
