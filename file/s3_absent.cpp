// The build without S3 support: no text is an S3 address, and none is looked at. Of the splitting of addresses the
// content type is left, which goes by the key alone.
#include <cerrno>
#include <cstdint>
#include <memory>

#include "border/guard.h"
#include "border/text.h"
#include "file/content_type.h"
#include "file/kinds.h"
#include "file/objects.h"
#include "kvos/locator.h"
#include "kvos/s3.h"

namespace kv::file {

const FileKind& objectKind() { return kLocalFile; }

std::unique_ptr<ObjectSearch> beginObjectSearch(const char*) {
    errno = ENOTSUP;
    return nullptr;
}

bool deleteObject(const char*) {
    errno = ENOTSUP;
    return false;
}

}  // namespace kv::file

uint32_t kvOSUseAws(const char*) { return 0; }

uint8_t kvOSAwsAccess(char*, char*, char*, const char*) { return 0; }

void kvOSAwsParse(const char*, char*, char*, char* pKey, char* pContentType, char*, char*) {
    constexpr std::size_t kSize = 256;
    if (pKey == nullptr || pContentType == nullptr) {
        errno = EINVAL;
        return;
    }
    kv::border::atBorder(false,
                         [&] { return kv::border::copyText(pContentType, kSize, kv::file::contentTypeOf(pKey)); });
}
