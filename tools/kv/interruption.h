// What is to be undone, and said, when a signal ends the program in the middle of a copy.
//
// The undoing happens in the signal's handler: a transfer that stalls would not come back to look at a flag.
#pragma once

#include <string>

namespace kv::tool {

/// While it lives, SIGINT, SIGTERM and SIGHUP remove a file and tell a message before they end the program. One at a
/// time.
class Undo {
public:
    /// @param path     what to remove; empty for nothing.
    /// @param message  what to say, without "kv: " and line end.
    Undo(const std::string& path, const std::string& message);
    ~Undo();
    Undo(const Undo&) = delete;
    Undo& operator=(const Undo&) = delete;
};

/// Holds these signals back, so that a step is seen done or not done at all.
class SignalsHeldBack {
public:
    SignalsHeldBack();
    ~SignalsHeldBack();
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;
};

}  // namespace kv::tool
