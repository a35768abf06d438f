// Opening and closing: from a locator's text to a record of the right kind, and back to nothing.
//
// The openers are asked in the order of their list; the first that does not decline decides.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "border/guard.h"
#include "border/secrets.h"
#include "border/text.h"
#include "errlog.h"
#include "file/kinds.h"
#include "file/openers.h"
#include "file/redirect.h"
#include "kvos/file.h"
#include "kvos/text.h"

namespace kv::file {

kvOSFileHandle* newRecord(std::uint32_t type, const OpenRequest& request) {
    auto* file = static_cast<kvOSFileHandle*>(std::calloc(1, sizeof(kvOSFileHandle)));
    if (file == nullptr) return nullptr;
    file->dwType = type;
    file->dwAccess = request.access;
    file->dwShare = request.share;
    file->pSecurity = request.security;
    file->dwCreation = request.creation;
    file->dwFlags = request.flags;
    file->hTemplate = request.templateHandle;
    return file;
}

void reportFailedOpen(const OpenRequest& request, const char* path) {
    const border::KeepErrno keep;
    ErrOut("kvOSCreateFile(%s,0x%08X,0x%08X,0x%08X,0x%08X)-FAIL=0x%08X(%d) ", border::withoutSecrets(path).c_str(),
           request.access, request.share, request.creation, request.flags, static_cast<unsigned>(keep.value()),
           keep.value());
}

namespace {

constexpr std::uint32_t kShareWrite = 2;

/// Only a warning: the open goes on. Meant: the number is the text's address.
void warnOfSharedWriting(const OpenRequest& request) {
    if ((request.access & KVFILE_WRITE) == 0 || (request.share & kShareWrite) == 0) return;
    ErrOut("Writing <%d> being open for write with write share enabled!",
           static_cast<int>(reinterpret_cast<std::intptr_t>(request.redirected)));
}

/// A path that is refused for its length, short enough for a message that still holds its reason. Secrets go first: a
/// cut could take away what shows them for such.
std::string shortened(const char* path) { return border::withoutSecrets(path).substr(0, 252) + "..."; }

std::int64_t open(OpenRequest request) {
    border::PathBuffer target;
    if (!redirected(request.path, target) || strnlen(request.path, border::kPathSize) == border::kPathSize) {
        errno = ENAMETOOLONG;
        reportFailedOpen(request, shortened(request.path).c_str());
        return kInvalidHandle;
    }
    if (target[0] == '\0') return kInvalidHandle;
    request.redirected = target;
    warnOfSharedWriting(request);
    for (const Opener opener : openers()) {
        if (const auto handle = opener(request)) return *handle;
    }
    return kInvalidHandle;
}

/// Whether a letter beyond U+FFFF would end the converted text, so that another file would be opened.
bool endsEarlyAsUtf8(const wchar_t* text) {
    for (; *text != L'\0'; ++text) {
        if ((static_cast<std::uint32_t>(*text) & 0xFFFF) == 0) return true;
    }
    return false;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::int64_t kvOSCreateFile(const char* path, std::uint32_t dwAccess, std::uint32_t dwShare, void* pSecurity,
                            std::uint32_t dwCreation, std::uint32_t dwFlags, std::int64_t hTemplate) {
    if (path == nullptr) {
        errno = ENOENT;
        return 0;
    }
    return kv::border::atBorder(file::kInvalidHandle, [&] {
        return file::open({path, nullptr, dwAccess, dwShare, pSecurity, dwCreation, dwFlags, hTemplate});
    });
}

std::int64_t kvOSCreateFileW(const wchar_t* path, std::uint32_t dwAccess, std::uint32_t dwShare, void* pSecurity,
                             std::uint32_t dwCreation, std::uint32_t dwFlags, std::int64_t hTemplate) {
    if (path == nullptr || *path == L'\0') return file::kInvalidHandle;
    return kv::border::atBorder(file::kInvalidHandle, [&]() -> std::int64_t {
        if (file::endsEarlyAsUtf8(path)) {
            errno = EILSEQ;
            return file::kInvalidHandle;
        }
        // As much room as the result needs: three bytes a letter are not rare.
        const std::int64_t size = kvStr_wchar_to_UTF8(nullptr, path, INT64_MAX);
        const auto text = std::make_unique<char[]>(static_cast<std::size_t>(size) + 3);
        kvStr_wchar_to_UTF8(text.get(), path, size + 1);
        return kvOSCreateFile(text.get(), dwAccess, dwShare, pSecurity, dwCreation, dwFlags, hTemplate);
    });
}

std::uint32_t kvOSCloseFile(std::int64_t hFile) {
    if (!file::isValid(hFile)) return 0;
    kvOSFileHandle& record = file::recordOf(hFile);
    for (std::uint32_t i = 0; i < record.dwOutputCount; ++i) kvOSCloseFile(record.hOutput[i]);
    return file::kindOf(record).close(record) ? 1 : 0;
}
