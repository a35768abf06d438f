// What one kind of file does behind the calls that all kinds share.
//
// A kind is a constant table. Slots are references, so that none can be null; one that a kind leaves out keeps the
// default written here, and the one without a default must be given or the file does not compile.
#pragma once

#include <cstdint>

#include "file/handle.h"

namespace kv::file {

enum class Outcome {
    failed,
    done,
    tryAgain,
    counted  // a write is done, and its call tells the bytes asked for, where all others tell 1
};

/// Where a transfer of one call goes.
struct Transfer {
    std::uint32_t count;         // bytes wanted
    std::uint32_t* moved;        // receives the bytes moved; may be null where the kind allows it
    kvOSOverlapped* overlapped;  // null, or where the transfer begins; a method text when a URL is written
};

// Position and size as every non-local kind keeps them: in the record, without any I/O (file/position.cpp).
std::int64_t seekInRecord(kvOSFileHandle& file, std::int64_t position);
std::int64_t seekEndInRecord(kvOSFileHandle& file);
std::int64_t tellInRecord(kvOSFileHandle& file);
std::uint32_t movePointerInRecord(kvOSFileHandle& file, std::int32_t low, std::int32_t* high, std::uint32_t method);
std::uint32_t movePointerExInRecord(kvOSFileHandle& file, std::int64_t distance, std::int64_t* result,
                                    std::uint32_t method);
std::uint64_t sizeInRecord(kvOSFileHandle& file);
bool cutInRecord(kvOSFileHandle& file);
bool isAtEndOfRecord(kvOSFileHandle& file);
inline bool flushNothing(kvOSFileHandle&) { return true; }

// What a kind answers that can't do a thing (file/kinds.cpp).
Outcome refuseRead(kvOSFileHandle& file, void* buffer, const Transfer& transfer);
Outcome refuseWrite(kvOSFileHandle& file, const void* buffer, const Transfer& transfer);

struct FileKind {
    Outcome (&read)(kvOSFileHandle&, void* buffer, const Transfer&) = refuseRead;
    Outcome (&write)(kvOSFileHandle&, const void* buffer, const Transfer&) = refuseWrite;
    std::int64_t (&seek)(kvOSFileHandle&, std::int64_t position) = seekInRecord;
    std::int64_t (&seekEnd)(kvOSFileHandle&) = seekEndInRecord;
    std::int64_t (&tell)(kvOSFileHandle&) = tellInRecord;
    std::uint32_t (&movePointer)(kvOSFileHandle&, std::int32_t low, std::int32_t* high,
                                 std::uint32_t method) = movePointerInRecord;
    std::uint32_t (&movePointerEx)(kvOSFileHandle&, std::int64_t distance, std::int64_t* result,
                                   std::uint32_t method) = movePointerExInRecord;
    std::uint64_t (&size)(kvOSFileHandle&) = sizeInRecord;
    bool (&cutHere)(kvOSFileHandle&) = cutInRecord;
    bool (&flush)(kvOSFileHandle&) = flushNothing;
    bool (&isAtEnd)(kvOSFileHandle&) = isAtEndOfRecord;
    bool (&close)(kvOSFileHandle&);  // frees what the kind owns and the record; no default, every kind owns something
    bool repeatsWrites = false;      // a write goes to the attached outputs as well
    bool takesOutputs = true;        // outputs can be attached
    bool seeksWhenWriting = true;    // the position can be moved also when the file is not read-only
};

extern const FileKind kLocalFile;
extern const FileKind kMemoryFile;
extern const FileKind kUrlFile;
extern const FileKind kS3File;

/// That of S3 objects; without S3 support, where no handle is one, the local kind.
const FileKind& objectKind();

/// Memory, URL and S3 by their value of dwType; any other value is local.
const FileKind& kindOf(const kvOSFileHandle& file);

/// Frees the three 1 MiB buffers, as far as they are set, and the record itself.
void freeRecord(kvOSFileHandle& file);

}  // namespace kv::file
