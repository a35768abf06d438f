// Without a buffer of their own: what writeOut took is with the system when it returns, and a full disk is noticed.
#include "kv/standard_streams.h"

#include <cerrno>
#include <cstdint>
#include <unistd.h>

#include "kv/complaint.h"

namespace kv::tool {

Exit writeOut(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            // Mostly the signal has ended the program by now; it does not where the parent had it ignored.
            if (errno != EPIPE) complainOf("write", "standard output", static_cast<std::uint32_t>(errno));
            return Exit::failed;
        }
    }
    return Exit::ok;
}

std::optional<std::size_t> readIn(std::span<char> block) {
    std::size_t filled = 0;
    while (filled < block.size()) {
        const ssize_t got = read(STDIN_FILENO, block.data() + filled, block.size() - filled);
        if (got == 0) break;
        if (got > 0) {
            filled += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            complainOf("read", "standard input", static_cast<std::uint32_t>(errno));
            return std::nullopt;
        }
    }
    return filled;
}

}  // namespace kv::tool
