// Temporary names, and the short answers about the program and its files.
//
// Most of these calls ignore some or all of their arguments, and the last three look at nothing at all: their answers
// are constants, which callers count on.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "border/text.h"
#include "file/null_argument.h"
#include "kvos/attributes.h"
#include "platform/executable.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kVersion = 0x1000000;

std::uint32_t lengthOf(const char* text) { return static_cast<std::uint32_t>(std::string_view(text).size()); }

/// Stores a text and gives its length; 0 with an empty buffer if it does not fit.
std::uint32_t store(char* buffer, std::string_view text) {
    border::copyPath(buffer, text);
    return lengthOf(buffer);
}

}  // namespace
}  // namespace kv::file

namespace border = kv::border;
namespace file = kv::file;

std::uint32_t kvOSGetTempPath(std::uint32_t, char* pBuffer) {
    if (pBuffer == nullptr) return file::refuseNull(0u);
    const char* configured = std::getenv("TMPDIR");
    return file::store(pBuffer, configured != nullptr ? configured : "/tmp/");
}

std::uint32_t kvOSGetTempFileName(const char*, const char*, std::uint32_t, char* pBuffer) {
    if (pBuffer == nullptr) return file::refuseNull(0u);
        // Deprecated on some systems: the name may be another's by the time it is used. Here no file is made, as
        // promised.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    if (std::tmpnam(pBuffer) == nullptr) pBuffer[0] = '\0';
#pragma GCC diagnostic pop
    return file::lengthOf(pBuffer);
}

std::uint32_t kvOsGetCommandLine(char* pBuffer) {
    if (pBuffer == nullptr) return file::refuseNull(0u);
    kv::platform::firstArgument(pBuffer, border::kPathSize);
    return file::lengthOf(pBuffer);
}

std::uint32_t kvOSGetFileVersion(const char*, std::uint32_t* pdwVersion) {
    if (pdwVersion == nullptr) return file::refuseNull(0u);
    *pdwVersion = file::kVersion;
    return 1;
}

std::uint32_t kvOSGetFilenameFromHandle(std::int64_t) { return 0; }

std::uint32_t kvOSGetDriveType(const char*) { return 0; }
