// The record behind every file handle, and the turning of handle values into records.
//
// A handle's value is the record's address: there is no table and no count, and a closed handle is not detected.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "border/text.h"
#include "kvos/file.h"

struct curl_slist;

namespace kv::file::s3 {
struct Object;
}

namespace kv::file {

enum class Direction : std::uint8_t { none, read, write };

}  // namespace kv::file

/// One open file of any kind. Fields that a kind does not use stay zero.
struct kvOSFileHandle {
    void* pFile;             // local: the stdio stream; URL: the curl easy handle; else null
    std::uint32_t dwType;    // KVFILE_MEMORY, KVFILE_CURL, KVFILE_S3; every other value is a local file
    std::uint32_t dwAccess;  // the six arguments of the open, as passed
    std::uint32_t dwShare;
    void* pSecurity;
    std::uint32_t dwCreation;
    std::uint32_t dwFlags;
    std::int64_t hTemplate;
    std::uint64_t qwPos;                 // position of every non-local kind, bytes; all ones after a refused seek
    std::uint64_t qwLastPos;             // where the latest memory read or write began, bytes
    std::uint64_t qwSize;                // size of every non-local kind, bytes; all ones for a URL of unknown length
    void* pBuf;                          // memory file: its bytes; URL: the buffer of the running transfer
    std::uint64_t qwBufLen;              // memory file: high-water mark of bytes written; transfers: bytes to send
    std::uint64_t qwBufSize;             // capacity of pBuf, bytes
    std::uint64_t qwBufFill;             // bytes moved so far by the running transfer
    std::uint32_t fBufGrow;              // not 0: pBuf may grow; 1 on memory files
    char szPath[kv::border::kPathSize];  // memory: the text as given; URL and S3: the redirected text; local: empty
    void* pCache;                        // read cache of a URL file, 1 MiB; URL and S3 handles only
    void* pSpare1;                       // allocated and freed with pCache, used by nothing
    void* pSpare2;
    std::uint64_t qwCacheStart;  // file offset of the first byte in pCache
    std::uint32_t dwCacheLen;    // bytes valid in pCache
    char* szOAuthServer;         // token endpoint, token file and its answers; URL files only
    char* szOAuthJson;
    char* szClientId;
    char* szClientSecret;
    char* szRefreshToken;
    char* szTokenType;
    char* szAccessToken;
    char* szIdToken;
    char* szUserName;
    char* szPassword;
    std::uint32_t dwTokenExpiry;       // of szAccessToken, monotonic milliseconds
    curl_slist* pHeaders;              // request headers of this handle
    std::uint32_t dwOutputCount;       // attached outputs, 0 to 3
    void* pBlock;                      // write block of an S3 file
    std::uint32_t dwBlockSize;         // its size, bytes: kBlockSize on memory and S3 handles, else 0 until first used
    std::uint32_t dwBlockUsed;         // bytes valid in it
    std::uint32_t dwBlockIndex;        // which block it is
    std::uint8_t dwBlockDirty;         // it has unsaved bytes
    std::int64_t hOutput[3];           // attached outputs
    kv::file::s3::Object* pObject;     // S3: client, address, parts and read-ahead blocks (file/s3/object.h); else null
    kv::file::Direction lastTransfer;  // local: what the stream did last, as it must not change over without a seek
};

namespace kv::file {

inline constexpr std::uint32_t kMaxOutputs = 3;
inline constexpr std::uint32_t kBlockSize = 0x3C00000;        // 60 MiB
inline constexpr std::uint64_t kFirstBufferSize = 1048576;    // of a memory file, and the step it grows by
inline constexpr std::uint64_t kNowhere = ~std::uint64_t{0};  // the position after a refused seek
inline constexpr std::int64_t kInvalidHandle = KVFILE_INVALID;

/// Whether a handle value can be a record at all; nothing more can be told of it.
inline bool isValid(std::int64_t handle) { return handle != 0 && handle != kInvalidHandle; }

inline kvOSFileHandle& recordOf(std::int64_t handle) { return *reinterpret_cast<kvOSFileHandle*>(handle); }
inline std::int64_t handleOf(const kvOSFileHandle& file) { return reinterpret_cast<std::int64_t>(&file); }

/// A handle as the messages print it: its low 32 bits.
inline int printed(std::int64_t handle) { return static_cast<int>(handle); }

/// Errors of the system that messages never tell: none, negative ones, and 997 (an operation that is still under way).
inline bool isSilentError(int error) { return error < 1 || error == 997; }

}  // namespace kv::file
