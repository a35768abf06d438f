// The log file as a stream of lines. What goes into it, and when, is for log_put.cpp and log_mode.cpp to say.
//
// The list's lock guards it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "diag/local_time.h"

namespace kv::diag {

class LogFile {
public:
    bool isOpen() const noexcept { return stream_ != nullptr; }

    /// Makes the file or empties it; with false, errno says why not.
    bool open(const char* path) noexcept;
    void close() noexcept;

    /// Whether the file has had its fill, so that what follows belongs into another one.
    bool isFull() const noexcept;

    /// Lets the next line with a stamp read the clock. All lines of one call then have its time: it is that of the
    /// writing, after the wait for the lock, and a message that runs on behind another costs no reading.
    void beginCall() noexcept { time_ = {}; }

    void writeStart() noexcept;

    /// A line of its own, with the present time. The text's leading line feed is dropped.
    void writeStamped(std::uint32_t number, std::string_view text) noexcept;

    /// The text alone: it runs on behind the last line.
    void writeContinuation(std::string_view text) noexcept { write(text); }

    /// A message: a line of its own if it asks for one or if the last such line was long enough ago.
    void writeMessage(std::uint32_t number, std::string_view text) noexcept;

    /// How many equal messages came in a row.
    void writeRunEnd(std::uint32_t count) noexcept;

    /// Goes back to the file's start if the file has grown far past its fill within one call.
    void wrapIfFar(std::uint32_t number) noexcept;

private:
    void write(std::string_view text) noexcept;
    void readClock() noexcept;
    void flushAtTimes(std::uint32_t now_ms) noexcept;

    std::FILE* stream_ = nullptr;
    std::uint64_t position_ = 0;
    // Monotonic; of the last message with a stamp, in whichever file. The lines of the history, which are written by
    // writeStamped, do not move it.
    std::uint32_t lastStamped_ms_ = 0;
    std::uint32_t lastFlush_ms_ = 0;  // monotonic
    std::string_view time_;           // as the present call's last stamp said it, or empty
    Moment now_{};
    LineStamp stamp_;
};

}  // namespace kv::diag
