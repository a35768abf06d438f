// Meant: only a stop that finds a count of 0 or less shuts the libraries down. The last regular one takes the count
// from 1 to 0 and leaves them running, and the next start readies them again, which is harmless.
#include "file/s3/use_count.h"

#include <atomic>

#include "border/guard.h"
#include "file/s3/client.h"
#include "kvos/s3.h"

int64_t glAmazonS3Refs = 0;

namespace kv::file::s3 {

// A count that threads lost would fall below 1 in time, and an open that finds it there takes a locator for a path.

std::int64_t beginUse() {
    const std::int64_t before = std::atomic_ref(glAmazonS3Refs).fetch_add(1);
    if (before == 0) initApi();
    return before + 1;
}

void endUse() noexcept {
    const border::KeepErrno keep;
    const std::atomic_ref count(glAmazonS3Refs);
    if (count.fetch_sub(1) > 0) return;
    count.store(0);
    shutdownApi();
}

}  // namespace kv::file::s3
