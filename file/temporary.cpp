// Temporary names, and the short answers about the program and its files.
//
// Some of these calls exist only to fill out the shape of the interface they imitate: they answer without looking.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "border/text.h"
#include "kvos/attributes.h"
#include "platform/executable.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kVersion = 0x1000000;

std::uint32_t lengthOf(const char* text) { return static_cast<std::uint32_t>(std::string_view(text).size()); }

/// Stores a text and gives its length; 0 with an empty buffer if it does not fit.
std::uint32_t store(char* buffer, std::string_view text) {
    if (!border::copyText(buffer, border::kPathSize, text)) errno = ENAMETOOLONG;
    return lengthOf(buffer);
}

std::uint32_t refuseNull() {
    errno = EINVAL;
    return 0;
}

}  // namespace
}  // namespace kv::file

using namespace kv;
using namespace kv::file;

extern "C" {

uint32_t kvOSGetTempPath(uint32_t, char* pBuffer) {
    if (pBuffer == nullptr) return refuseNull();
    const char* configured = std::getenv("TMPDIR");
    return store(pBuffer, configured != nullptr ? configured : "/tmp/");
}

uint32_t kvOSGetTempFileName(const char*, const char*, uint32_t, char* pBuffer) {
    if (pBuffer == nullptr) return refuseNull();
    if (std::tmpnam(pBuffer) == nullptr) pBuffer[0] = '\0';
    return lengthOf(pBuffer);
}

uint32_t kvOsGetCommandLine(char* pBuffer) {
    if (pBuffer == nullptr) return refuseNull();
    platform::firstArgument(pBuffer, border::kPathSize);
    return lengthOf(pBuffer);
}

uint32_t kvOSGetFileVersion(const char*, uint32_t* pdwVersion) {
    if (pdwVersion == nullptr) return refuseNull();
    *pdwVersion = kVersion;
    return 1;
}

uint32_t kvOSGetFilenameFromHandle(int64_t) { return 0; }

uint32_t kvOSGetDriveType(const char*) { return 0; }

}  // extern "C"
