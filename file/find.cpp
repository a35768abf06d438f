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
#include "kvos/file.h"
#include "kvos/locator.h"

static_assert(offsetof(kvOSFindData, ftCreation) == 4 && offsetof(kvOSFindData, dwSizeHigh) == 28);
static_assert(offsetof(kvOSFindData, reserved) == 36 && offsetof(kvOSFindData, szName) == 44);
static_assert(sizeof(kvOSFindData::szName) == 4097);

namespace kv::file {
namespace {

constexpr int kEndOfSearch = -1;

/// The record behind a find handle.
struct FindHandle {
    std::uint32_t kind;  // KVFILE_LOCAL or KVFILE_S3, as files have it
    std::unique_ptr<LocalSearch> local;
};

FindHandle* recordOf(std::int64_t handle) noexcept {
    if (handle == KVFIND_INVALID) return nullptr;
    return reinterpret_cast<FindHandle*>(static_cast<std::intptr_t>(handle));
}

bool isLocal(const FindHandle* record) noexcept {
    return record != nullptr && record->kind == KVFILE_LOCAL && record->local != nullptr && record->local->isValid();
}

std::int64_t findFirstLocal(const char* pattern, kvOSFindData* entry) {
    if (pattern == nullptr || entry == nullptr) {
        errno = kEndOfSearch;
        return KVFIND_INVALID;
    }
    auto search = LocalSearch::begin(pattern);
    if (search == nullptr || !search->next(*entry)) return KVFIND_INVALID;
    auto record = std::make_unique<FindHandle>(FindHandle{KVFILE_LOCAL, std::move(search)});
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(record.release()));
}

/// Lists the objects under a prefix. There is no client to list them with in this version.
std::int64_t findFirstObject(const char* /*address*/, kvOSFindData* /*entry*/) {
    errno = ENOTSUP;
    return KVFIND_INVALID;
}

}  // namespace
}  // namespace kv::file

using namespace kv;
using namespace kv::file;

extern "C" {

int64_t kvOSFindFirstFile(const char* pPattern, kvOSFindData* pData) {
    return border::atBorder(KVFIND_INVALID, [&] {
        return kvOSUseAws(pPattern) != 0 ? findFirstObject(pPattern, pData) : findFirstLocal(pPattern, pData);
    });
}

uint32_t kvOSFindNextFile(int64_t hFind, kvOSFindData* pData) {
    FindHandle* record = recordOf(hFind);
    if (!isLocal(record) || pData == nullptr) {
        errno = kEndOfSearch;
        return 0;
    }
    return record->local->next(*pData) ? 1 : 0;
}

uint32_t kvOSFindClose(int64_t hFind) {
    if (hFind == KVFIND_INVALID) return 0;
    const std::unique_ptr<FindHandle> record(recordOf(hFind));
    if (isLocal(record.get())) return 1;
    errno = kEndOfSearch;
    return 0;
}

uint32_t FindClose(int64_t hFind) { return kvOSFindClose(hFind); }

const char* kvOSFindGetSeparator(int64_t hFind) { return hFind == KVFIND_INVALID ? nullptr : "/"; }

char kvOSFindGetSeparatorChar(int64_t hFind) { return hFind == KVFIND_INVALID ? '\0' : '/'; }

}  // extern "C"
