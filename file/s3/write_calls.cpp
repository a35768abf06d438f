// The exported calls on part objects.
#include <cerrno>
#include <cstdint>

#include "border/guard.h"
#include "border/text.h"
#include "file/s3/parts.h"
#include "kvos/s3.h"

namespace kv::file::s3 {
namespace {

/// Runs `body` with the record of an S3 handle; 0 for all others, and when memory is short.
template <class Body>
std::uint32_t onObject(std::int64_t handle, Body&& body) {
    if (!isValid(handle) || recordOf(handle).pObject == nullptr) return 0;
    return border::atBorder(0u, [&] { return body(recordOf(handle)) ? 1u : 0u; });
}

}  // namespace
}  // namespace kv::file::s3

namespace s3 = kv::file::s3;

std::uint32_t kvOSCreateAWSObjName(std::uint32_t dwPart, std::int64_t hFile, char* pOut) {
    if (pOut == nullptr) return 0;
    *pOut = '\0';
    return s3::onObject(hFile, [&](kvOSFileHandle& file) {
        const auto key = s3::partKey(*file.pObject, dwPart);
        return key && kv::border::copyPath(pOut, *key);
    });
}

std::uint32_t skvOSWriteAWSBlock(std::int64_t hFile) { return s3::onObject(hFile, s3::storeBlock); }

std::uint32_t kvOSReadAWSBlock(std::int64_t hFile, std::uint64_t qwPosition) {
    if (s3::partAt(qwPosition) >= s3::kMostParts) {
        errno = EFBIG;
        return 0;
    }
    return s3::onObject(hFile, [&](kvOSFileHandle& file) { return s3::changePart(file, qwPosition); });
}
