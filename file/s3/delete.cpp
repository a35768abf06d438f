// Deleting an object by its name, with a client of its own for the one request.
#include <cerrno>
#include <string>

#include "border/guard.h"
#include "file/objects.h"
#include "file/s3/object.h"
#include "file/s3/session.h"
#include "file/s3/use_count.h"

namespace kv::file {
namespace {

bool deleteIn(const s3::Session& session) {
    const std::string bucket = s3::bareBucket(session.address.bucket);
    if (bucket.empty() || session.address.key.empty()) {  // without a key it is the bucket that would be deleted
        errno = EINVAL;
        return false;
    }
    return session.client->deleteObject({.bucket = bucket, .key = session.address.key}).isSuccess();
}

}  // namespace

bool deleteObject(const char* locator) {
    const s3::Use use;
    auto session = s3::beginSession(locator, s3::Settings::ofDeletion, s3::UnknownRegion::staysAsAsked);
    if (!session) return false;
    const bool isDeleted = deleteIn(*session);
    const border::KeepErrno keep;
    session.reset();
    return isDeleted;
}

}  // namespace kv::file
