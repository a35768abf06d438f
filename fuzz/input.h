// What the fuzzer gives as lines of text, and heap blocks of exactly the size that a call may use.
//
// A line that ends in "^" and a number stands for the text ahead of the "^", repeated to that many bytes: "a/^4096" is
// a path of 4096 bytes. Without it the fuzzer would have to grow its input to the limits byte by byte.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace kv::fuzz {

/// Stops the run with a finding.
inline void must(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "property broken: %s\n", property);
    std::abort();
}

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : left_(reinterpret_cast<const char*>(data), size) {}

    bool isAtEnd() const { return left_.empty(); }

    /// The next line up to its first zero byte, repeated if it asks for it; empty behind the last.
    std::string text() {
        const std::string_view line = nextLine();
        return repeated(line.substr(0, line.find('\0')));
    }

    /// The next line as a decimal number; 0 for anything else.
    std::int64_t number() {
        const std::string_view line = nextLine();
        std::int64_t value = 0;
        std::from_chars(line.data(), line.data() + line.size(), value);
        return value;
    }

private:
    static constexpr std::size_t kLongestText = 12000;

    std::string_view nextLine() {
        const std::size_t end = std::min(left_.find('\n'), left_.size());
        const std::string_view line = left_.substr(0, end);
        left_.remove_prefix(std::min(end + 1, left_.size()));
        return line;
    }

    static std::string repeated(std::string_view line) {
        const std::size_t mark = line.rfind('^');
        std::size_t length = 0;
        if (mark == std::string_view::npos || mark == 0) return std::string(line);
        const auto [rest, error] = std::from_chars(line.data() + mark + 1, line.data() + line.size(), length);
        if (error != std::errc{} || rest != line.data() + line.size()) return std::string(line);
        std::string text;
        while (text.size() < std::min(length, kLongestText)) text += line.substr(0, mark);
        text.resize(std::min(length, kLongestText));
        return text;
    }

    std::string_view left_;
};

/// A block in which the sanitizer sees the first byte too many, written or read.
class ExactBuffer {
public:
    explicit ExactBuffer(std::size_t size) : bytes_(new char[size]), size_(size) {
        std::memset(bytes_.get(), 'Z', size);
    }

    /// A text with its terminator and nothing behind it.
    explicit ExactBuffer(std::string_view text) : ExactBuffer(text.size() + 1) { put(text); }

    char* data() { return bytes_.get(); }
    operator char*() { return bytes_.get(); }

    void put(std::string_view text) {
        must(text.size() < size_, "the fuzz target itself keeps to the buffer");
        if (!text.empty()) std::memcpy(bytes_.get(), text.data(), text.size());
        bytes_[text.size()] = '\0';
    }

    std::string_view text() const {
        must(std::memchr(bytes_.get(), 0, size_) != nullptr, "what is in a buffer is terminated");
        return bytes_.get();
    }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_;
};

inline constexpr std::size_t kPathSize = 4096;
inline constexpr std::size_t kExtensionSize = 256;

/// What is left of a text for a buffer of a path: itself, or its first 4095 bytes.
inline std::string_view fitted(std::string_view text) { return text.substr(0, kPathSize - 1); }

}  // namespace kv::fuzz
