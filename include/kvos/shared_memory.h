// Memory that several processes share by a name: a pair of calls, and a class for C++.
//
// The name is the system's: at most one "/", ahead of it, and at most 255 bytes (31 on macOS). It stays until somebody
// removes it, whatever becomes of the processes. No call sends a message; all may be made from any thread, but a record
// or an object belongs to one at a time.
#ifndef KVOS_SHARED_MEMORY_H
#define KVOS_SHARED_MEMORY_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#include <string>
#endif

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A segment made by kvOSSMemOpen. It belongs to the library; look, but do not change it. */
typedef struct kvOSSMem {
    int64_t nDescriptor;
    void *pMemory; /* all ones where nothing could be mapped */
    uint32_t dwSize;
    uint32_t dwFlags; /* kept, and not looked at */
    char szName[4096];
} kvOSSMem;

/**
 * Makes a named segment, or empties the one of that name, and maps it for reading and writing. Its bytes are zero.
 *
 * Meant: the permissions of a new segment are 666 counted in decimal, octal 1232, less the process's mask: the owner
 * may write and not read, so that only root opens it a second time. Other processes share it through a fork.
 *
 * @param pName     the name.
 * @param dwFlags   stored.
 * @param dwSize    bytes.
 * @param ppMemory  receives the mapping; untouched for the result null. Meant: all ones, with a record as the result,
 *                  where the segment was made and could not be mapped: always so for a size of 0.
 * @return the record, to be given to kvOSSMemClose; null on failure. The name stays, for the caller to remove, where
 * only the size could not be had. No memory is set aside: where the system runs out of it, the first touch of a page
 *         ends the process.
 *
 * Last error: EINVAL for a null pointer, ENAMETOOLONG for a name that does not fit in szName, else as the system left
 *             it.
 */
KVUTIL_API kvOSSMem *kvOSSMemOpen(const char *pName, uint32_t dwFlags, uint32_t dwSize, void **ppMemory);

/**
 * Unmaps a segment, removes its name and frees the record. Other processes keep what they have mapped.
 *
 * Meant: the descriptor stays open. Who makes many segments closes nDescriptor ahead of this.
 *
 * @return 0; -1 if the name could not be removed, the record being freed all the same, and for null (EINVAL).
 */
KVUTIL_API int32_t kvOSSMemClose(kvOSSMem *pRecord);

#ifdef __cplusplus
}

static_assert(offsetof(kvOSSMem, nDescriptor) == 0 && offsetof(kvOSSMem, pMemory) == 8 &&
                  offsetof(kvOSSMem, dwSize) == 8 + sizeof(void *) &&
                  offsetof(kvOSSMem, dwFlags) == 12 + sizeof(void *) &&
                  offsetof(kvOSSMem, szName) == 16 + sizeof(void *),
              "the fields of a segment follow each other in the stated order");

namespace shoom {

/* Results of Shm::CreateOrOpen. */
enum {
    kOK = 0,
    kErrorCreationFailed = 100,
    kErrorMappingFailed = 110,
    kErrorOpeningFailed = 120 /* there is no such segment, or it may not be opened */
};

/**
 * A named segment that one process creates and others open for reading.
 *
 * Meant: whoever goes removes the name, a reader and one that never opened it too. Those who have it mapped keep it,
 * and nobody else finds it.
 */
class KVUTIL_API Shm {
public:
    /** Remembers name and size and touches nothing. The name is without "/", which is put ahead of it. */
    Shm(const std::string &name, size_t size) noexcept;

    /** Unmaps and closes what is open, and removes the name. Keeps errno. */
    ~Shm();

    Shm(const Shm &) = delete;
    Shm &operator=(const Shm &) = delete;

    /**
     * Opens the segment; a second call lets go of what the first one opened.
     *
     * @param create  true: removes a segment of that name and makes a new one, zeroed, for reading and writing, with
     * the permissions 0755 less the process's mask. False: opens the one that is there, for reading only.
     * @return 0, or one of the codes above, with errno as the system left it; what was made by then stays until the
     * next call or the destructor. What is mapped beyond a segment's own end can't be touched: the reader's size is at
     * most the creator's.
     */
    int32_t CreateOrOpen(bool create);

    const std::string &Path() const { return path_; }
    /** The first byte; null while nothing is open. A write through it by one that opened for reading ends the process.
     */
    uint8_t *Data() const { return static_cast<uint8_t *>(memory_); }
    size_t Size() const { return static_cast<size_t>(size_); }

private:
    void letGo();

    std::string path_;
    void *memory_ = nullptr;
    uint64_t size_ = 0;
    int32_t descriptor_ = -1;
};

}  // namespace shoom
#endif

#endif
