// Runs a program as a child process and keeps what it said, and the two ways in which most runs end. No shell is
// between: an argument arrives as it is written.
#pragma once

#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

extern char** environ;

namespace kvtest {

/// How a program ended, and all that it wrote.
struct Outcome {
    int exit = -1;    // -1: ended by a signal
    int signal = 0;   // the one that ended it
    std::string out;  // empty if standard output went elsewhere
    std::string err;

    /// Standard output read as one JSON document; a failed test and null if it is none.
    nlohmann::json json() const {
        auto document = nlohmann::json::parse(out, nullptr, false);
        EXPECT_FALSE(document.is_discarded()) << out;
        return document.is_discarded() ? nlohmann::json() : document;
    }
};

struct Streams {
    std::string_view in = "";  // the bytes of standard input
    int out = -1;              // where standard output goes instead of into Outcome::out
    int input = -1;            // where standard input comes from instead of `in`
};

/// A file without a name that holds a text or takes one.
class Capture {
public:
    explicit Capture(std::string_view text = "") : file_(std::tmpfile()) {
        EXPECT_NE(file_, nullptr);
        EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file_), text.size());
        std::rewind(file_);
        fcntl(descriptor(), F_SETFD, FD_CLOEXEC);
    }
    ~Capture() { std::fclose(file_); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    int descriptor() const { return fileno(file_); }

    std::string text() const {
        std::string all;
        char block[4096];
        off_t at = 0;
        for (ssize_t got; (got = pread(descriptor(), block, sizeof block, at)) > 0; at += got) {
            all.append(block, static_cast<std::size_t>(got));
        }
        return all;
    }

private:
    std::FILE* file_;
};

/// A pipe that nobody reads any more.
class BrokenPipe {
public:
    BrokenPipe() {
        EXPECT_EQ(pipe(ends_), 0);
        close(ends_[0]);
        fcntl(ends_[1], F_SETFD, FD_CLOEXEC);
    }
    ~BrokenPipe() { close(ends_[1]); }
    BrokenPipe(const BrokenPipe&) = delete;
    BrokenPipe& operator=(const BrokenPipe&) = delete;

    int end() const { return ends_[1]; }

private:
    int ends_[2];
};

inline Outcome runProgram(const char* program, std::vector<std::string> arguments, const Streams& streams = {}) {
    arguments.insert(arguments.begin(), program);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    const Capture in(streams.in);
    const Capture out;
    const Capture err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, streams.input >= 0 ? streams.input : in.descriptor(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, streams.out >= 0 ? streams.out : out.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.descriptor(), STDERR_FILENO);
    pid_t child = -1;
    const int spawned = posix_spawn(&child, program, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);

    Outcome run;
    int status = 0;
    EXPECT_EQ(spawned, 0) << program;
    if (spawned != 0) return run;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status)) run.exit = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
    run.out = out.text();
    run.err = err.text();
    return run;
}

inline Outcome runKv(std::vector<std::string> arguments, const Streams& streams = {}) {
    return runProgram(KV_PROGRAM, std::move(arguments), streams);
}

/// It did what it was told, and had nothing to say.
inline void expectSilentSuccess(const Outcome& run) {
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
}

/// It failed, and this message is all that it wrote.
inline void expectFailure(const Outcome& run, std::string_view message) {
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
}

/// Every value of a byte, twice over, with line ends and zeros in the middle.
inline std::string everyByte() {
    std::string bytes;
    for (int i = 0; i < 512; ++i) bytes += static_cast<char>(i);
    return bytes;
}

}  // namespace kvtest
