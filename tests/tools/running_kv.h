// kv while it runs: for what happens when a signal comes, or when standard error is a terminal.
#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tools/run_kv.h"

namespace kvtest {

class RunningKv {
public:
    enum class Errors { file, terminal };

    explicit RunningKv(std::vector<std::string> arguments, Errors errors = Errors::file) {
        arguments.insert(arguments.begin(), KV_PROGRAM);
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        int err = err_.descriptor();
        if (errors == Errors::terminal) {
            terminal_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
            EXPECT_GE(terminal_, 0);
            EXPECT_EQ(grantpt(terminal_), 0);
            EXPECT_EQ(unlockpt(terminal_), 0);
            err = open(ptsname(terminal_), O_RDWR | O_NOCTTY | O_CLOEXEC);
            EXPECT_GE(err, 0);
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
        EXPECT_EQ(posix_spawn(&child_, KV_PROGRAM, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        if (terminal_ >= 0) close(err);
    }
    ~RunningKv() {
        if (terminal_ >= 0) close(terminal_);
    }
    RunningKv(const RunningKv&) = delete;
    RunningKv& operator=(const RunningKv&) = delete;

    pid_t process() const { return child_; }
    void send(int signal) const { kill(child_, signal); }

    /// Waits for its end. Of a terminal's text, what a terminal holds: some KiB.
    Outcome wait() {
        Outcome run;
        int status = 0;
        EXPECT_EQ(waitpid(child_, &status, 0), child_);
        if (WIFEXITED(status)) run.exit = WEXITSTATUS(status);
        if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
        run.err = terminal_ >= 0 ? terminalText() : err_.text();
        return run;
    }

private:
    std::string terminalText() const {
        std::string all;
        char block[4096];
        fcntl(terminal_, F_SETFL, O_NONBLOCK);
        for (ssize_t got; (got = read(terminal_, block, sizeof block)) > 0;) {
            all.append(block, static_cast<std::size_t>(got));
        }
        return all;
    }

    Capture err_;
    int terminal_ = -1;
    pid_t child_ = -1;
};

}  // namespace kvtest
