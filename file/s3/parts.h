// The part objects that a written file consists of until its close: names, storing, loading.
//
// A part is as large as the write block. Which parts were stored, and how many bytes of them, stands in
// Object::storedParts, since the store is never asked for that. A cut of the file changes its size alone: what it
// leaves behind in the block and in the store has to be forgotten before the size can grow again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "file/handle.h"

namespace kv::file::s3 {

/// Part numbers are signed words. Stores take fewer parts by far, which is theirs to tell.
inline constexpr std::uint64_t kMostParts = 0x7FFFFFFF;

inline std::uint64_t partAt(std::uint64_t position) { return position / kBlockSize; }

/// How many parts a file of this size has.
inline std::uint64_t partCount(std::uint64_t size) { return size / kBlockSize + (size % kBlockSize == 0 ? 0 : 1); }

/// Bytes of a part that lie ahead of the file's end.
std::uint64_t bytesAheadOfEnd(const kvOSFileHandle& file, std::uint64_t part);

/// Takes what lies behind the file's end for cut off, in the block and in the stored parts, so that it never comes
/// back.
void forgetCutBytes(kvOSFileHandle& file);

/// How many bytes of a stored part belong to the file; 0 for one that was not stored.
std::uint32_t storedBytes(const kvOSFileHandle& file, std::uint32_t part);

/// The names that the parts of an object are made of.
struct PartNames {
    std::string prefix;     // "clips/a_<identifier>/"
    std::string name;       // "a"
    std::string extension;  // ".mxf"

    std::string file(std::uint64_t number) const;  // "a_1.mxf"; numbers count from 1
};

/// Makes the prefix if there is none yet; nullopt, with errno, where the keys would not fit.
std::optional<PartNames> partNames(Object& object);

/// The key of a part; nullopt, with errno, where it would not fit.
std::optional<std::string> partKey(Object& object, std::uint64_t part);

/// The write block, allocated if there is none yet; false without memory.
bool ensureBlock(kvOSFileHandle& file);

/// Stores the block's unsaved bytes; false when the store refused them, and the block stays as it is.
bool storeBlock(kvOSFileHandle& file);

/// Loads a part into the block; false, with errno, when it can't be had whole, and the block stays as it is.
bool loadPart(kvOSFileHandle& file, std::uint64_t part);

/// Makes the block that of a part without any bytes.
void beginPart(kvOSFileHandle& file, std::uint32_t part);

/// Stores what the block holds and loads the part at a position, if that is another one.
bool changePart(kvOSFileHandle& file, std::uint64_t position);

}  // namespace kv::file::s3
