// Opening and closing S3 objects.
//
// An open that asks for what is there sends a request for the object's head. Every other one, whatever its access,
// begins an upload, which stays behind in the store: the close makes one of its own.
#include "file/s3/open.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "border/guard.h"
#include "border/text.h"
#include "errlog.h"
#include "file/kinds.h"
#include "file/s3/object.h"
#include "file/s3/session.h"
#include "file/s3/transfer.h"
#include "file/s3/use_count.h"
#include "kvos/locator.h"
#include "kvos/memory.h"

namespace kv::file::s3 {
namespace {

constexpr std::size_t kBufferSize = 1048576;
constexpr long kNotFound = 404;

/// Frees all that the record owns, and the record. The count of users goes down with it.
void freeObject(kvOSFileHandle& file) {
    if (file.pObject != nullptr) closeBlocks(*file.pObject);
    delete file.pObject;
    KVFree(file.pBlock);
    freeRecord(file);
    endUse();
}

struct FreeObject {
    void operator()(kvOSFileHandle* file) const { freeObject(*file); }
};
using OwnedRecord = std::unique_ptr<kvOSFileHandle, FreeObject>;

/// A record with all but its client; null without memory, the user that was counted for it taken away.
OwnedRecord newObject(const OpenRequest& request) {
    kvOSFileHandle* const record = newRecord(KVFILE_S3, request);
    if (record == nullptr) {
        endUse();
        return nullptr;
    }
    OwnedRecord file(record);
    for (void** buffer : {&file->pCache, &file->pSpare1, &file->pSpare2}) *buffer = std::calloc(kBufferSize, 1);
    if (file->pCache == nullptr || file->pSpare1 == nullptr || file->pSpare2 == nullptr) return nullptr;
    file->dwBlockSize = kBlockSize;
    border::copyPath(file->szPath, request.redirected);
    file->pObject = new Object;
    return file;
}

void takeSession(Object& object, Session&& session) {
    object.credentials = std::move(session.credentials);
    object.clientConfig = std::move(session.configuration);
    object.client = std::move(session.client);
    object.contentType = std::move(session.address.contentType);
    object.bucket = std::move(session.address.bucket);
    object.key = std::move(session.address.key);
}

/// The size of what is there. With "open always" nothing need be there, and whatever failed counts as that.
bool openExisting(kvOSFileHandle& file) {
    const Object& object = *file.pObject;
    const auto head = object.client->headObject({.bucket = bareBucket(object.bucket), .key = object.key});
    file.qwSize = head.isSuccess() ? head.result().contentLength : 0;
    if (head.isSuccess() || file.dwCreation == KVFILE_OPEN_ALWAYS) return true;
    const Error& error = head.error();
    const border::KeepErrno keep;
    if (error.httpStatus != kNotFound) {
        ErrOut("Aws::HeadObject exception/error    ONE: %s %s\n", error.exceptionName.c_str(), error.message.c_str());
    }
    return false;
}

bool beginUpload(kvOSFileHandle& file) {
    Object& object = *file.pObject;
    const auto upload = object.client->createMultipartUpload(
        {.bucket = bareBucket(object.bucket), .key = object.key, .contentType = object.contentType});
    if (upload.isSuccess()) {
        object.uploadId = upload.result().uploadId;
        return true;
    }
    const Error& error = upload.error();
    const border::KeepErrno keep;
    ErrOut("Aws::HeadObject exception/error     TWO: %s %s\n", error.exceptionName.c_str(), error.message.c_str());
    return false;
}

bool openIn(kvOSFileHandle& file, const OpenRequest& request) {
    auto session = beginSession(request.redirected, Settings::asStored, UnknownRegion::staysAsAsked);
    if (!session) return false;
    takeSession(*file.pObject, std::move(*session));
    const bool isExisting = file.dwCreation == KVFILE_OPEN_EXISTING || file.dwCreation == KVFILE_OPEN_ALWAYS;
    return isExisting ? openExisting(file) : beginUpload(file);
}

}  // namespace

std::optional<std::int64_t> openObject(const OpenRequest& request) {
    if (kvOSUseAws(request.redirected) == 0) return std::nullopt;
    // Meant: a count that a host has made negative keeps the client from starting, and counts the attempt.
    if (beginUse() < 1) return std::nullopt;
    OwnedRecord file = newObject(request);
    if (file == nullptr) {
        errno = ENOMEM;
        return kInvalidHandle;
    }
    const bool isOpen = openIn(*file, request);
    if (isOpen) return handleOf(*file.release());
    const border::KeepErrno keep;
    file.reset();
    return kInvalidHandle;
}

bool closeObject(kvOSFileHandle& file) {
    // Meant: nothing that happens here shows in the result.
    border::atBorder(false, [&] {
        finishObject(file);
        return true;
    });
    freeObject(file);
    return true;
}

}  // namespace kv::file::s3
