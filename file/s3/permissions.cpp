// Helpers for callers that list permissions or complete uploads by themselves. Nothing in the library calls them.
#include <array>
#include <cstddef>
#include <cstdint>

#include "kvos/s3.h"

namespace {

constexpr std::array kPermissions{"NOT_SET", "FULL_CONTROL", "WRITE", "WRITE_ACP", "READ", "READ_ACP"};
static_assert(kPermissions.size() == 6);

}  // namespace

const char* GetPermissionString(std::int32_t nPermission) {
    const auto index = static_cast<std::size_t>(nPermission);
    return index < kPermissions.size() ? kPermissions[index] : "*unknown!*";
}

std::uint32_t compareParts(const sCompletedPart* pA, const sCompletedPart* pB) {
    if (pA == nullptr) return 0;
    return pB == nullptr || pA->nPartNumber < pB->nPartNumber ? 1 : 0;
}
