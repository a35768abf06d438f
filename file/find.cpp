// The find calls: which branch an enumeration takes, and the handle over both.
//
// A handle's value is the record's address, as with files: a closed handle is not detected.
#include "kvos/find.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "border/guard.h"
#include "file/find_local.h"
#include "file/search.h"
#include "kvos/file.h"
#include "kvos/locator.h"

static_assert(offsetof(kvOSFindData, ftCreation) == 4 && offsetof(kvOSFindData, dwSizeHigh) == 28);
static_assert(offsetof(kvOSFindData, reserved) == 36 && offsetof(kvOSFindData, szName) == 44);
static_assert(sizeof(kvOSFindData::szName) == 4097);

namespace kv::file {
namespace {

/// The record behind a find handle.
struct stFindFileStruct {
    std::uint32_t dwType;  // KVFILE_LOCAL or KVFILE_S3, as files have it
    LocalSearchOwner pLocal;
};

stFindFileStruct* recordOf(std::int64_t handle) noexcept {
    if (handle == KVFIND_INVALID) return nullptr;
    return reinterpret_cast<stFindFileStruct*>(static_cast<std::intptr_t>(handle));
}

bool isLocal(const stFindFileStruct* record) noexcept {
    return record != nullptr && record->dwType == KVFILE_LOCAL && record->pLocal != nullptr &&
           record->pLocal->isValid();
}

std::int64_t findFirstLocal(const char* pattern, kvOSFindData* entry) {
    if (pattern == nullptr || entry == nullptr) {
        errno = kEndOfSearch;
        return KVFIND_INVALID;
    }
    LocalSearchOwner search = LocalSearch::begin(pattern);
    if (search == nullptr || !search->next(*entry)) return KVFIND_INVALID;
    auto record = std::make_unique<stFindFileStruct>(stFindFileStruct{KVFILE_LOCAL, std::move(search)});
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(record.release()));
}

/// Lists the objects under a prefix. There is no client to list them with in this version.
std::int64_t findFirstObject(const char* /*address*/, kvOSFindData* /*entry*/) {
    errno = ENOTSUP;
    return KVFIND_INVALID;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::int64_t kvOSFindFirstFile(const char* pPattern, kvOSFindData* pData) {
    return kv::border::atBorder(KVFIND_INVALID, [&] {
        return kvOSUseAws(pPattern) != 0 ? file::findFirstObject(pPattern, pData)
                                         : file::findFirstLocal(pPattern, pData);
    });
}

std::uint32_t kvOSFindNextFile(std::int64_t hFind, kvOSFindData* pData) {
    file::stFindFileStruct* record = file::recordOf(hFind);
    if (!file::isLocal(record) || pData == nullptr) {
        errno = file::kEndOfSearch;
        return 0;
    }
    return record->pLocal->next(*pData) ? 1 : 0;
}

std::uint32_t kvOSFindClose(std::int64_t hFind) {
    if (hFind == KVFIND_INVALID) return 0;
    const std::unique_ptr<file::stFindFileStruct> record(file::recordOf(hFind));
    if (file::isLocal(record.get())) return 1;
    errno = file::kEndOfSearch;
    return 0;
}

std::uint32_t FindClose(std::int64_t hFind) { return kvOSFindClose(hFind); }

const char* kvOSFindGetSeparator(std::int64_t hFind) { return hFind == KVFIND_INVALID ? nullptr : "/"; }

char kvOSFindGetSeparatorChar(std::int64_t hFind) { return hFind == KVFIND_INVALID ? '\0' : '/'; }
