// What the process writes to standard error while the object lives, read as the messages that they are.
//
// The descriptor is turned, not the stream, so that what other libraries write counts as well. Messages carry their own
// line ends or none: look for a text with count(), and compare all of text() only where nothing may be sent.
#pragma once

#include <cstddef>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace kvtest {

class CapturedMessages {
public:
    CapturedMessages() : file_(std::tmpfile()), before_(dup(STDERR_FILENO)) {
        std::fflush(stderr);
        EXPECT_NE(file_, nullptr);
        dup2(fileno(file_), STDERR_FILENO);
    }
    ~CapturedMessages() {
        restore();
        std::fclose(file_);
    }
    CapturedMessages(const CapturedMessages&) = delete;
    CapturedMessages& operator=(const CapturedMessages&) = delete;

    /// All that was written so far.
    std::string text() {
        std::fflush(stderr);
        std::string all;
        char block[4096];
        off_t at = 0;
        for (ssize_t got; (got = pread(fileno(file_), block, sizeof block, at)) > 0; at += got) {
            all.append(block, static_cast<std::size_t>(got));
        }
        return all;
    }

    /// How often `part` occurs in it.
    std::size_t count(std::string_view part) {
        const std::string all = text();
        std::size_t found = 0;
        for (std::size_t at = all.find(part); at != std::string::npos; at = all.find(part, at + part.size())) ++found;
        return found;
    }

private:
    void restore() {
        std::fflush(stderr);
        if (before_ >= 0) {
            dup2(before_, STDERR_FILENO);
            close(before_);
            before_ = -1;
        }
    }

    std::FILE* file_;
    int before_;
};

}  // namespace kvtest
