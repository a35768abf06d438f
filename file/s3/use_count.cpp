// Meant: only a stop that finds a count of 0 or less shuts the libraries down. The last regular one takes the count
// from 1 to 0 and leaves them running, and the next start readies them again, which is harmless.
#include "file/s3/use_count.h"

#include "border/guard.h"
#include "border/relaxed.h"
#include "file/s3/client.h"
#include "kvos/s3.h"

int64_t glAmazonS3Refs = 0;

namespace kv::file::s3 {

std::int64_t beginUse() {
    const std::int64_t before = border::relaxedLoad(glAmazonS3Refs);
    border::relaxedStore(glAmazonS3Refs, before + 1);
    if (before == 0) initApi();
    return before + 1;
}

void endUse() noexcept {
    const border::KeepErrno keep;
    const std::int64_t before = border::relaxedLoad(glAmazonS3Refs);
    border::relaxedStore(glAmazonS3Refs, before - 1);
    if (before > 0) return;
    shutdownApi();
    border::relaxedStore(glAmazonS3Refs, std::int64_t{0});
}

}  // namespace kv::file::s3
