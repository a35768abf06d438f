// The running program, as the proc file system shows it.
//
// The argument vector is shown as one run of bytes, all words of it, each with its terminator: it is read into a buffer
// of its own, since callers count on nothing behind the first word. A program may have overwritten its vector.
#include "platform/executable.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "border/guard.h"
#include "border/text.h"

namespace kv::platform {
namespace {

/// Reads up to `size` bytes from the beginning of a file; -1 with errno set on failure.
ssize_t readBeginning(const char* path, char* target, std::size_t size) noexcept {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return -1;
    std::size_t filled = 0;
    ssize_t got = 0;
    while (filled < size && (got = read(file, target + filled, size - filled)) != 0) {
        if (got > 0) {
            filled += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            break;
        }
    }
    const border::KeepErrno keep;
    close(file);
    return got < 0 ? -1 : static_cast<ssize_t>(filled);
}

}  // namespace

bool executablePath(char* target, std::size_t size) noexcept {
    const ssize_t length = readlink("/proc/self/exe", target, size);
    if (length >= 0 && static_cast<std::size_t>(length) < size) {
        target[length] = '\0';
        return true;
    }
    if (length >= 0) errno = ENAMETOOLONG;
    target[0] = '\0';
    return false;
}

bool firstArgument(char* target, std::size_t size) noexcept {
    target[0] = '\0';
    border::PathBuffer words;
    const ssize_t length = readBeginning("/proc/self/cmdline", words, sizeof words);
    if (length <= 0) return false;
    const std::string_view read(words, static_cast<std::size_t>(length));
    const std::size_t end = read.find('\0');
    if (end != std::string_view::npos && border::copyText(target, size, read.substr(0, end))) return true;
    errno = ENAMETOOLONG;
    return false;
}

}  // namespace kv::platform
