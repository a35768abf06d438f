// The S3 entry in the list of openers, and the close that belongs to it.
#pragma once

#include <cstdint>
#include <optional>

#include "file/openers.h"

namespace kv::file::s3 {

/// Opens an S3 object; declines every text that names none, and every text while the S3 client does not start.
std::optional<std::int64_t> openObject(const OpenRequest& request);

/// Makes the object out of what was written, then frees all. A slot of the kind's table; always true.
bool closeObject(kvOSFileHandle& file);

}  // namespace kv::file::s3
