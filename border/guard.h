// What stands between an exported call and the C++ behind it.
//
// The calls that end a thread, and the entries of threads, stay outside atBorder: ending a thread unwinds like an
// exception, and a noexcept frame below it would abort the process.
#pragma once

#include <cerrno>
#include <concepts>
#include <exception>
#include <utility>

namespace kv::border {

/// Ends every exception at the exported call; `failure` is that call's own failure value. Acquire nothing ahead of it.
template <class Result, std::invocable Body>
Result atBorder(Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return failure;  // errno stays as the failing call left it
    }
}

/// The same for a call that tells what ended it: `tell` gets the exception's text, or none.
template <class Result, std::invocable Body, std::invocable<const char*> Tell>
Result atBorder(Result failure, Body&& body, Tell&& tell) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        tell(error.what());
        return failure;
    } catch (...) {
        tell("");
        return failure;
    }
}

/// Restores errno when the scope ends: declare it where the failure is noticed, before any clean-up.
class KeepErrno {
public:
    KeepErrno() = default;
    ~KeepErrno() { errno = saved_; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;

    int value() const { return saved_; }

private:
    int saved_ = errno;
};

}  // namespace kv::border
