// The look-up is a plain search for each row's extension within the key's own, so that order decides and ".jpeg2" finds
// the row of "jpe". Both builds have it: it is what the one without S3 support keeps of the splitting of addresses.
#include "file/content_type.h"

#include "border/guard.h"
#include "border/text.h"
#include "kvos/naming.h"

namespace kv::file {

std::string contentTypeOf(const std::string& key) {
    const border::KeepErrno keep;
    border::PathBuffer extension{};
    kvOSSplitPath(key.c_str(), nullptr, nullptr, nullptr, extension);
    return kvGetMimeType(extension);
}

}  // namespace kv::file
