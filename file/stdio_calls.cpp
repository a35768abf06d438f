// The calls shaped like stdio's: lines, characters, texts and formatted text on a handle of any kind.
//
// The writing ones give their text to every attached output and then write it through kvOSWriteFile, which gives it to
// the outputs again: an output gets such text twice. Meant.
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

#include "border/guard.h"
#include "file/handle.h"
#include "file/outputs.h"
#include "kvos/file.h"

namespace kv::file {
namespace {

/// What one call of kvOSWriteFile can take.
constexpr std::size_t kLongestText = 0xFFFFFFFE;

struct Written {
    bool succeeded;
    std::uint32_t bytes;  // by the main file
};

Written writeText(std::int64_t handle, const char* text, std::size_t length) {
    if (length > kLongestText) {
        errno = EFBIG;
        return {false, 0};
    }
    const auto count = static_cast<std::uint32_t>(length);
    if (isValid(handle)) {
        for (const std::int64_t output : outputsOf(recordOf(handle))) {
            std::uint32_t toOutput = 0;  // for a URL this is the room for an answer, which must not come into the text
            kvOSWriteFile(output, text, count, &toOutput, nullptr);
        }
    }
    std::uint32_t written = 0;
    const bool succeeded = kvOSWriteFile(handle, text, count, &written, nullptr) == 1;
    return {succeeded, written};
}

/// Ends the text at the first `ending` of the chunk; the bytes taken away are counted in the result.
std::int64_t endTextAt(char ending, char* chunk, std::size_t length) {
    void* found = std::memchr(chunk, ending, length);
    if (found == nullptr) return 0;
    *static_cast<char*>(found) = '\0';
    return 1;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

char* kvOSfgets(char* pBuffer, std::uint32_t dwSize, std::int64_t hFile) {
    if (pBuffer == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    const std::int64_t start = kvOSTell(hFile);
    std::uint32_t got = 0;
    // A size of 0 wraps to the count that every read refuses.
    if (kvOSReadFile(hFile, pBuffer, dwSize - 1, &got, nullptr) == 0 || got == 0) return nullptr;
    pBuffer[got] = '\0';
    // Both searches cover the whole chunk, so that a carriage return further on counts as well. Meant.
    const std::int64_t endings = file::endTextAt('\n', pBuffer, got) + file::endTextAt('\r', pBuffer, got);
    kvOSSeek(hFile, start + endings + static_cast<std::int64_t>(std::strlen(pBuffer)));
    return pBuffer;
}

std::uint32_t kvOSfputc(int nCharacter, std::int64_t hFile) {
    const char character = static_cast<char>(nCharacter);
    return file::writeText(hFile, &character, 1).succeeded ? 1 : 0xFFFFFFFF;
}

std::uint32_t kvOSfputs(const char* pText, std::int64_t hFile) {
    if (pText == nullptr) {
        errno = EINVAL;
        return 0xFFFFFFFF;
    }
    return file::writeText(hFile, pText, std::strlen(pText)).succeeded ? 1 : 0xFFFFFFFF;
}

std::uint32_t kvOSfprintf(std::int64_t hFile, const char* pFormat, ...) {
    char text[4096];
    va_list arguments;
    va_start(arguments, pFormat);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(text, sizeof text, pFormat, arguments);
    va_end(arguments);
    const std::uint32_t written = kv::border::atBorder(0u, [&]() -> std::uint32_t {
        if (length < 0) return 0;
        const auto size = static_cast<std::size_t>(length) + 1;
        if (size <= sizeof text) return file::writeText(hFile, text, size - 1).bytes;
        const auto longText = std::make_unique<char[]>(size);  // nothing is cut
        std::vsnprintf(longText.get(), size, pFormat, again);
        return file::writeText(hFile, longText.get(), size - 1).bytes;
    });
    va_end(again);
    return written;
}
