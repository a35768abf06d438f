// The close of a written S3 object: one upload that has the store copy the parts into the object, which are then
// deleted. No data moves through this machine, unless parts do not have the length that their place asks for.
//
// Failures are told and passed over. Meant: the parts go also when the object could not be made. But where a part can't
// get its length, no object is made and the parts stay: what stands behind it would come to a wrong place.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "errlog.h"
#include "file/s3/object.h"
#include "file/s3/parts.h"
#include "file/s3/transfer.h"
#include "kvos/memory.h"

namespace kv::file::s3 {
namespace {

constexpr int kAttempts = 3;  // to give a part its length

void emptyBlock(kvOSFileHandle& file) {
    file.dwBlockUsed = 0;
    file.dwBlockIndex = static_cast<std::uint32_t>(partAt(file.qwPos));
}

void storeRest(kvOSFileHandle& file) {
    if (file.dwBlockUsed == 0) return;
    file.dwBlockDirty = 1;
    storeBlock(file);
    emptyBlock(file);
}

/// Loads a part, makes it as long as this, with zeros where nothing was written or what was written is cut off, and
/// stores it.
bool resize(kvOSFileHandle& file, std::uint32_t part, std::uint32_t length) {
    if (!ensureBlock(file)) return false;
    if (storedBytes(file, part) == 0) {
        beginPart(file, part);
    } else if (!loadPart(file, part)) {
        return false;
    }
    if (file.dwBlockUsed < length) {
        kvOSZeroMemory(static_cast<std::byte*>(file.pBlock) + file.dwBlockUsed, length - file.dwBlockUsed);
    }
    file.dwBlockUsed = length;
    file.dwBlockDirty = 1;
    return storeBlock(file);
}

bool resizeStubbornly(kvOSFileHandle& file, std::uint32_t part, std::uint32_t length) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (resize(file, part, length)) return true;
    }
    // Nothing is left to store: the block is that of a part which stays as it is.
    beginPart(file, part);
    return false;
}

/// How many of the first `count` parts were stored without a gap. None behind a gap comes into the object.
std::uint64_t storedWithoutGap(const Object& object, std::uint64_t count) {
    std::uint64_t without = 0;
    for (const auto& [part, stored] : object.storedParts) {
        if (part != without || without == count) break;
        ++without;
    }
    return without;
}

/// Parts are joined without regard to where they belong. One with a part behind it therefore has to be full, and none
/// may hold bytes that were cut off. False for a part that could not be made so.
bool settleLengths(kvOSFileHandle& file) {
    Object& object = *file.pObject;
    const std::uint64_t count = partCount(file.qwSize);
    const std::uint64_t joined = storedWithoutGap(object, count);
    for (std::uint32_t part = 0; part < joined; ++part) {
        const StoredPart stored = object.storedParts[part];
        const auto room = static_cast<std::uint32_t>(bytesAheadOfEnd(file, part));
        // The last one of an object that was there before the open may be shorter than that was: it then is the end.
        const bool hasToBeFull = part + 1 < joined || (joined == count && object.wasCut);
        const bool isShort = hasToBeFull && stored.valid < room;
        if ((isShort || stored.bytes > stored.valid) && !resizeStubbornly(file, part, room)) return false;
    }
    return true;
}

void beginUpload(Object& object) {
    const auto upload = object.client->createMultipartUpload(
        {.bucket = bareBucket(object.bucket), .key = object.key, .contentType = object.contentType});
    if (upload.isSuccess()) {
        object.uploadId = upload.result().uploadId;  // the upload of the open is left behind
        return;
    }
    const Error& error = upload.error();
    ErrOut("Aws::HeadObject exception/error    THREE: %s %s\n", error.exceptionName.c_str(), error.message.c_str());
}

std::vector<ListedObject> listParts(Object& object) {
    std::vector<ListedObject> listed;
    ListObjectsV2Request request{bareBucket(object.bucket), *object.partPrefix, {}, {}};
    while (true) {
        const auto page = object.client->listObjectsV2(request);
        if (!page.isSuccess()) {
            ErrOut("Aws::Deleted err exception: %s \n", page.error().exceptionName.c_str());
            ErrOut("Aws::Deleted err ERROR: %s \n", page.error().message.c_str());
            return listed;
        }
        const Listing& listing = page.result();
        listed.insert(listed.end(), listing.contents.begin(), listing.contents.end());
        // A store that gives no new token would be asked for ever.
        const bool goesOn =
            !listing.nextContinuationToken.empty() && listing.nextContinuationToken != request.continuationToken;
        if (!listing.isTruncated || !goesOn) return listed;
        request.continuationToken = listing.nextContinuationToken;
    }
}

void appendPart(Object& object, const std::vector<ListedObject>& found, std::uint64_t index) {
    if (found.size() > index) {
        object.completedParts.push_back({found[index].eTag, static_cast<std::int32_t>(index + 1)});
    } else {
        ErrOut("Aws:: !Found object, but part does not exist <%d, max=%d> ", static_cast<int>(index),
               static_cast<int>(found.size()));
    }
}

/// Notes a copied part for the completion. Meant: its tag is that of the found entry at the part's index, not the
/// copy's, so that a part behind a missing one gets another's tag or none.
void noteCopied(Object& object, const std::vector<ListedObject>& found, std::uint64_t index) {
    auto& parts = object.completedParts;
    const auto number = static_cast<std::int32_t>(index + 1);
    const auto known = std::ranges::find(parts, number, &CompletedPart::partNumber);
    if (known != parts.end()) {
        const auto place = static_cast<std::size_t>(known - parts.begin());
        if (found.size() > place) {
            known->eTag = found[place].eTag;
        } else {
            ErrOut("Aws:: Found object, but part does not exist <%d, max=%d> ", static_cast<int>(place),
                   static_cast<int>(found.size()));
        }
    } else if (parts.empty() && found.empty()) {
        ErrOut("Aws:: Adding first object, but list is empty <%d, max=%d> ", static_cast<int>(index), 0);
    } else {
        appendPart(object, found, index);
    }
}

bool copyPart(Object& object, const PartNames& names, std::uint64_t number) {
    const std::string bucket = bareBucket(object.bucket);
    const auto copied =
        object.client->uploadPartCopy({.bucket = bucket,
                                       .key = object.key,
                                       .uploadId = object.uploadId,
                                       .copySource = '/' + bucket + '/' + names.prefix + names.file(number),
                                       .partNumber = static_cast<std::int32_t>(number)});
    if (copied.isSuccess()) return true;
    ErrOut("Aws::GetObject <%s> exception/error: %s %s\n", object.key.c_str(), copied.error().exceptionName.c_str(),
           copied.error().message.c_str());
    return false;
}

/// Has all parts copied; gives the listed ones among them, in the order of their numbers.
std::vector<ListedObject> copyParts(kvOSFileHandle& file, const PartNames& names) {
    Object& object = *file.pObject;
    const std::vector<ListedObject> listed = listParts(object);
    std::vector<ListedObject> found;
    const std::uint64_t count = partCount(file.qwSize);
    for (std::uint64_t number = 1; number <= count; ++number) {
        const auto entry = std::ranges::find(listed, names.prefix + names.file(number), &ListedObject::key);
        if (entry != listed.end()) found.push_back(*entry);
        if (!copyPart(object, names, number)) continue;
        noteCopied(object, found, number - 1);
        file.dwBlockDirty = 0;
        emptyBlock(file);
    }
    return found;
}

void tellNotCompleted(const Error& error) {
    ErrOut("\nAws::HeadObject exception/error    FOUR: %s %s\n", error.exceptionName.c_str(), error.message.c_str());
}

void complete(Object& object) {
    if (object.completedParts.empty()) return;
    const auto completed = object.client->completeMultipartUpload({.bucket = bareBucket(object.bucket),
                                                                   .key = object.key,
                                                                   .uploadId = object.uploadId,
                                                                   .parts = object.completedParts});
    if (!completed.isSuccess()) tellNotCompleted(completed.error());
}

bool deleteListed(Object& object, const std::string& key) {
    const auto deleted = object.client->deleteObject({.bucket = bareBucket(object.bucket), .key = key});
    if (deleted.isSuccess()) {
        ErrOut("Aws::Deleted object: %s \n", key.c_str());
        return true;
    }
    ErrOut("Aws::Deleted err exception: %s \n", deleted.error().exceptionName.c_str());
    ErrOut("Aws::Deleted err message: %s \n", deleted.error().message.c_str());
    return false;
}

/// Meant: the parts are listed anew for each of them, and each listing is told.
void deletePart(Object& object, const std::string& key) {
    const auto page = object.client->listObjects(
        {.bucket = bareBucket(object.bucket), .prefix = *object.partPrefix, .delimiter = {}, .marker = {}});
    if (!page.isSuccess()) {
        ErrOut("\nAws::HeadObject exception/error  FIVE: %s %s\n", page.error().exceptionName.c_str(),
               page.error().message.c_str());
        return;
    }
    for (const ListedObject& entry : page.result().contents) {
        ErrOut("Aws::Object name: %s and object size %llu \n", entry.key.c_str(),
               static_cast<unsigned long long>(entry.size));
        if (entry.key == key && deleteListed(object, key)) return;
    }
}

}  // namespace

void finishObject(kvOSFileHandle& file) {
    Object& object = *file.pObject;
    forgetCutBytes(file);
    storeRest(file);
    if (object.key.empty() || !object.partPrefix) return;
    const auto names = partNames(object);
    if (!names) return;
    if (!settleLengths(file)) {
        tellNotCompleted({"IncompletePart", "The parts below " + *object.partPrefix + " stay as they are", 0});
        return;
    }
    beginUpload(object);
    const std::vector<ListedObject> found = copyParts(file, *names);
    complete(object);
    for (const ListedObject& part : found) deletePart(object, part.key);
}

}  // namespace kv::file::s3
