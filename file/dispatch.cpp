// Opening and closing: from a locator's text to a record of the right kind, and back to nothing.
//
// The openers are asked in the order of their list; the first that does not decline decides.
#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <new>

#include "border/guard.h"
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

namespace {

constexpr std::uint32_t kShareWrite = 2;

/// Only a warning: the open goes on. Meant: the number is the text's address.
void warnOfSharedWriting(const OpenRequest& request) {
    if ((request.access & KVFILE_WRITE) == 0 || (request.share & kShareWrite) == 0) return;
    ErrOut("Writing <%d> being open for write with write share enabled!",
           static_cast<int>(reinterpret_cast<std::intptr_t>(request.redirected)));
}

std::int64_t open(OpenRequest request) {
    border::PathBuffer target;
    if (!redirected(request.path, target)) {
        ErrOut("kvOSCreateFile(%s,0x%08X,0x%08X,0x%08X,0x%08X)-FAIL=0x%08X(%d) ", request.path, request.access,
               request.share, request.creation, request.flags, static_cast<unsigned>(errno), errno);
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
