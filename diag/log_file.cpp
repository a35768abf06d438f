// The stream counts its own position, so that the tests on it need no call of the system; only a wrap really seeks.
// Written is what the stream took: a failing disk is not noticed, and does not move the position.
#include "diag/log_file.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>

#include "kvos/time.h"

namespace kv::diag {
namespace {

constexpr std::uint64_t kFull = 0xA00001;
constexpr std::uint64_t kFarPastFull = 0xA00400;

/// Messages that follow a stamped one sooner than this run on behind it.
constexpr std::uint32_t kBurst_ms = 101;

/// How long a message may wait in the buffer while others follow it.
constexpr std::uint32_t kFlushInterval_ms = 100;

// One file is open at a time, so that one buffer does. Its size saves most calls of the system in a burst.
char sStreamBuffer[65536];

/// A short text put together, so that it goes to the stream in one call. All its parts together fit.
class HeadText {
public:
    HeadText& add(std::string_view part) noexcept {
        std::memcpy(end_, part.data(), part.size());
        end_ += part.size();
        return *this;
    }
    HeadText& add(std::uint32_t number) noexcept {
        end_ = std::to_chars(end_, text_ + sizeof text_, static_cast<std::int32_t>(number)).ptr;
        return *this;
    }
    std::string_view text() const noexcept { return {text_, static_cast<std::size_t>(end_ - text_)}; }

    static constexpr std::size_t kRoomForText = 1024;

private:
    char text_[kRoomForText + 160];
    char* end_ = text_;
};

}  // namespace

bool LogFile::open(const char* path) noexcept {
    stream_ = std::fopen(path, "w+");
    if (stream_ == nullptr) stream_ = std::fopen(path, "w");
    if (stream_ == nullptr) return false;
    // A program that outlives the log would keep its room on the disk.
    fcntl(fileno(stream_), F_SETFD, FD_CLOEXEC);
    std::setvbuf(stream_, sStreamBuffer, _IOFBF, sizeof sStreamBuffer);
    position_ = 0;
    return true;
}

void LogFile::close() noexcept {
    if (stream_ != nullptr) std::fclose(stream_);
    stream_ = nullptr;
}

bool LogFile::isFull() const noexcept { return position_ >= kFull; }

void LogFile::write(std::string_view text) noexcept { position_ += std::fwrite(text.data(), 1, text.size(), stream_); }

void LogFile::readClock() noexcept {
    if (!time_.empty()) return;
    now_ = wallClock();
    time_ = stamp_.of(now_);
}

void LogFile::writeStart() noexcept {
    readClock();
    char clock[16];
    writeClockTime(localFields(now_), clock);
    HeadText line;
    line.add("LOG STARTED ").add(time_).add(" ").add(clock).add(" \n");
    write(line.text());
}

void LogFile::writeStamped(std::uint32_t number, std::string_view text) noexcept {
    if (text.starts_with('\n')) text.remove_prefix(1);
    readClock();
    HeadText head;
    head.add("\n").add(number).add("\t").add(time_).add("\t");
    if (text.size() <= HeadText::kRoomForText) {
        head.add(text);
        text = {};
    }
    write(head.text());
    if (!text.empty()) write(text);
}

void LogFile::writeMessage(std::uint32_t number, std::string_view text) noexcept {
    const std::uint32_t now_ms = kvOSGetMs();
    if (text.starts_with('\n') || now_ms - lastStamped_ms_ >= kBurst_ms) {
        lastStamped_ms_ = now_ms;
        writeStamped(number, text);
    } else {
        writeContinuation(text);
    }
    flushAtTimes(now_ms);
}

/// Who looks at the file from outside, or after a crash, sees all but what came in the last moments.
void LogFile::flushAtTimes(std::uint32_t now_ms) noexcept {
    if (now_ms - lastFlush_ms_ < kFlushInterval_ms) return;
    lastFlush_ms_ = now_ms;
    std::fflush(stream_);
}

void LogFile::writeRunEnd(std::uint32_t count) noexcept {
    HeadText line;
    line.add("\t\t\t\t\t\t[repeat x").add(count).add("]\n");
    write(line.text());
}

void LogFile::wrapIfFar(std::uint32_t number) noexcept {
    if (position_ < kFarPastFull) return;
    std::fseek(stream_, 0, SEEK_SET);
    position_ = 0;
    HeadText mark;
    mark.add(number).add("\t").add(time_).add("\tLog Wrapped\n");
    write(mark.text());
}

}  // namespace kv::diag
