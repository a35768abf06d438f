// Reading, writing and finishing S3 objects, as the kind's table and the close need them.
//
// An object is read through blocks that are fetched ahead (read_cache.h), and written as a series of part objects of
// 60 MiB, which the finishing joins (write.h). The two know nothing of each other.
#pragma once

#include "file/kinds.h"
#include "file/s3/object.h"

namespace kv::file::s3 {

// Slots of the kind's table.
Outcome readObject(kvOSFileHandle& file, void* buffer, const Transfer& transfer);
Outcome writeObject(kvOSFileHandle& file, const void* buffer, const Transfer& transfer);

/// Stores what is unsaved and, if anything was written, makes the object out of its parts and deletes them. Failures
/// are told and passed over. Frees nothing: the write block, memory of KVAlloc, stays in the record.
void finishObject(kvOSFileHandle& file);

/// Lets go of every read-ahead block, without waiting for those that are under way. Reading may begin anew.
void closeBlocks(Object& object);

}  // namespace kv::file::s3
