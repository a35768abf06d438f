// The kind of S3 objects: reading and writing are its own, the position is that of every non-local kind.
#include "file/kinds.h"
#include "file/s3/open.h"
#include "file/s3/transfer.h"

namespace kv::file {

constinit const FileKind kS3File{.read = s3::readObject, .write = s3::writeObject, .close = s3::closeObject};

const FileKind& objectKind() { return kS3File; }

}  // namespace kv::file
