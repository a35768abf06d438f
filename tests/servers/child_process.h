// A server's process: owned by its id, ended with its owner, and also when the owner's process dies of whatever.
//
// A second small process waits for the owner to go and then kills the first; it is what makes a crashed or killed test
// leave nothing behind.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kvtest {

class ChildProcess {
public:
    /// Starts a program, found by PATH, with what it writes to standard error going to the end of the file `messages`.
    /// Throws std::runtime_error with the reason if it can't.
    ChildProcess(std::vector<std::string> command, const std::string& messages);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Whether it has not ended by itself.
    bool isRunning();
    /// The next line of its standard output, without the line end. Throws std::runtime_error with `what` and the
    /// child's messages if none comes within half a minute or the child ends.
    std::string readLine(const std::string& what);
    /// Writes to its standard input.
    void write(std::string_view text);
    /// Ends it at once, in the middle of whatever it does, and waits until it is gone. Harmless when it is.
    void kill();

private:
    pid_t startGuardian();

    std::string name_;
    std::string messages_;
    pid_t child_ = -1;
    pid_t guardian_ = -1;
    int toChild_ = -1;
    int fromChild_ = -1;
    int toGuardian_ = -1;  // its closing, by us or by our end, ends the guardian
    std::string unread_;
};

/// How long a server may take for its start, and for an answer to its fixture.
inline constexpr std::chrono::seconds kPatience{30};

/// The content of a file, to be shown as the reason of a failure.
std::string messagesIn(const std::string& path);

}  // namespace kvtest
