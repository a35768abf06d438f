// Between fork and exec only calls that are safe in a process with several threads.
#include "servers/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kvtest {
namespace {

struct Pipe {
    Pipe() {
        if (pipe(ends.data()) != 0) throw std::runtime_error(std::string("no pipe: ") + std::strerror(errno));
        for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    ~Pipe() {
        for (const int end : ends) {
            if (end >= 0) close(end);
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int readEnd() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }
    int takeReadEnd() { return std::exchange(ends[0], -1); }
    int takeWriteEnd() { return std::exchange(ends[1], -1); }

    std::array<int, 2> ends{-1, -1};
};

void closeIfOpen(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

void reap(pid_t& process) {
    while (process > 0 && waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
    process = -1;
}

/// Signals that a test blocks or ignores must not reach the child.
void resetSignals() {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
}

}  // namespace

std::string messagesIn(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return text.empty() ? "it said nothing" : text;
}

ChildProcess::ChildProcess(std::vector<std::string> command, const std::string& messages)
    : name_(command.at(0)), messages_(messages) {
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);

    Pipe in;
    Pipe out;
    Pipe failure;  // closed by a successful exec, else it brings the error number
    child_ = fork();
    if (child_ < 0) throw std::runtime_error("no process for " + name_ + ": " + std::strerror(errno));
    if (child_ == 0) {
        const int log = open(messages_.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(in.readEnd(), STDIN_FILENO);
        dup2(out.writeEnd(), STDOUT_FILENO);
        if (log >= 0) dup2(log, STDERR_FILENO);
        resetSignals();
        execvp(arguments[0], arguments.data());
        const int error = errno;
        const ssize_t told = ::write(failure.writeEnd(), &error, sizeof error);
        _exit(told > 0 ? 127 : 126);
    }
    int error = 0;
    close(failure.takeWriteEnd());
    ssize_t got = 0;
    do {
        got = read(failure.readEnd(), &error, sizeof error);
    } while (got < 0 && errno == EINTR);
    if (got > 0) {
        reap(child_);
        throw std::runtime_error("cannot run " + name_ + ": " + std::strerror(error) + " (scripts/setup installs it)");
    }
    toChild_ = in.takeWriteEnd();
    fromChild_ = out.takeReadEnd();
    guardian_ = startGuardian();
}

ChildProcess::~ChildProcess() { kill(); }

// A shell, since a fork that stayed without exec would hold on to every socket that the test has open just now.
pid_t ChildProcess::startGuardian() {
    Pipe alive;
    std::string child = std::to_string(child_);
    std::string script = "read -r gone || kill -9 \"$0\"";  // a line says that the child is gone already
    const std::array<char*, 5> arguments{const_cast<char*>("sh"), const_cast<char*>("-c"), script.data(), child.data(),
                                         nullptr};
    const pid_t guardian = fork();
    if (guardian == 0) {
        dup2(alive.readEnd(), STDIN_FILENO);
        resetSignals();
        execv("/bin/sh", arguments.data());
        _exit(127);
    }
    if (guardian > 0) toGuardian_ = alive.takeWriteEnd();
    return guardian;
}

bool ChildProcess::isRunning() {
    if (child_ <= 0) return false;
    siginfo_t ended{};
    return waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == 0;
}

std::string ChildProcess::readLine(const std::string& what) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    std::size_t end;
    while ((end = unread_.find('\n')) == std::string::npos) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd ready{fromChild_, POLLIN, 0};
        std::array<char, 4096> block;
        ssize_t got = 0;
        if (left.count() > 0 && poll(&ready, 1, static_cast<int>(left.count())) > 0) {
            got = read(fromChild_, block.data(), block.size());
        }
        if (got <= 0 && errno != EINTR) throw std::runtime_error(what + " (" + name_ + "): " + messagesIn(messages_));
        if (got > 0) unread_.append(block.data(), static_cast<std::size_t>(got));
    }
    std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    return line;
}

void ChildProcess::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(toChild_, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            throw std::runtime_error(name_ + " does not listen: " + std::strerror(errno));
        }
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void ChildProcess::kill() {
    if (child_ > 0) ::kill(child_, SIGKILL);
    reap(child_);
    if (toGuardian_ >= 0) {
        const ssize_t told = ::write(toGuardian_, "\n", 1);
        static_cast<void>(told);
    }
    closeIfOpen(toGuardian_);
    reap(guardian_);
    closeIfOpen(toChild_);
    closeIfOpen(fromChild_);
}

}  // namespace kvtest
