// The move: a copy, and then the source goes, whatever became of the copy. Meant.
#include <optional>

#include "border/guard.h"
#include "file/copied.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"

uint32_t kvOSMoveFile(const char* pSource, const char* pDestination) {
    return kv::file::copyAtBorder(0u, [&] {
        const uint32_t result = kvOSCopyFile(pSource, pDestination, 0);
        std::optional<kv::border::KeepErrno> keep;
        if (result == 0) keep.emplace();  // the first cause
        kvOSDeleteFile(pSource);
        return result;
    });
}
