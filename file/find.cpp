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
#include "file/objects.h"
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
    std::unique_ptr<ObjectSearch> pObjects;

    bool isLocal() const noexcept { return dwType == KVFILE_LOCAL && pLocal != nullptr && pLocal->isValid(); }
    bool isOfObjects() const noexcept { return dwType == KVFILE_S3 && pObjects != nullptr; }
};

stFindFileStruct* recordOf(std::int64_t handle) noexcept {
    if (handle == KVFIND_INVALID) return nullptr;
    return reinterpret_cast<stFindFileStruct*>(static_cast<std::intptr_t>(handle));
}

std::int64_t handleOf(stFindFileStruct&& search) {
    auto record = std::make_unique<stFindFileStruct>(std::move(search));
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(record.release()));
}

std::int64_t refuse() {
    errno = kEndOfSearch;
    return KVFIND_INVALID;
}

std::int64_t findFirstLocal(const char* pattern, kvOSFindData& entry) {
    LocalSearchOwner search = LocalSearch::begin(pattern);
    if (search == nullptr || !search->next(entry)) return KVFIND_INVALID;
    return handleOf({KVFILE_LOCAL, std::move(search), nullptr});
}

std::int64_t findFirstObject(const char* pattern, kvOSFindData& entry) {
    std::unique_ptr<ObjectSearch> search = beginObjectSearch(pattern);
    if (search != nullptr && search->next(entry)) return handleOf({KVFILE_S3, nullptr, std::move(search)});
    const border::KeepErrno keep;
    search.reset();
    return KVFIND_INVALID;
}

std::int64_t findFirst(const char* pattern, kvOSFindData* entry) {
    if (pattern == nullptr || entry == nullptr) return refuse();
    return kvOSUseAws(pattern) != 0 ? findFirstObject(pattern, *entry) : findFirstLocal(pattern, *entry);
}

bool findNext(stFindFileStruct* record, kvOSFindData* entry) {
    if (record != nullptr && entry != nullptr) {
        if (record->isOfObjects()) return record->pObjects->next(*entry);
        if (record->isLocal()) return record->pLocal->next(*entry);
    }
    errno = kEndOfSearch;
    return false;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::int64_t kvOSFindFirstFile(const char* pPattern, kvOSFindData* pData) {
    return kv::border::atBorder(KVFIND_INVALID, [&] { return file::findFirst(pPattern, pData); });
}

std::uint32_t kvOSFindNextFile(std::int64_t hFind, kvOSFindData* pData) {
    return kv::border::atBorder(0u, [&] { return file::findNext(file::recordOf(hFind), pData) ? 1u : 0u; });
}

std::uint32_t kvOSFindClose(std::int64_t hFind) {
    if (hFind == KVFIND_INVALID) return 0;
    const std::unique_ptr<file::stFindFileStruct> record(file::recordOf(hFind));
    if (record != nullptr && (record->isLocal() || record->isOfObjects())) return 1;
    errno = file::kEndOfSearch;
    return 0;
}

std::uint32_t FindClose(std::int64_t hFind) { return kvOSFindClose(hFind); }

const char* kvOSFindGetSeparator(std::int64_t hFind) { return hFind == KVFIND_INVALID ? nullptr : "/"; }

char kvOSFindGetSeparatorChar(std::int64_t hFind) { return hFind == KVFIND_INVALID ? '\0' : '/'; }
