// Two values of the attributes are no bits: 0 is what is not there, all ones what is neither file nor folder.
#include "kv/file_type.h"

#include "kvos/attributes.h"

namespace kv::tool {

FileType fileType(std::uint32_t attributes) {
    if (attributes == KVATTR_INVALID || attributes == 0) return FileType::other;
    return (attributes & KVATTR_DIRECTORY) != 0 ? FileType::folder : FileType::file;
}

const char* nameOf(FileType type) {
    switch (type) {
        case FileType::file:
            return "file";
        case FileType::folder:
            return "folder";
        case FileType::other:
            return "other";
    }
    return "other";
}

bool isReadOnly(std::uint32_t attributes) {
    return attributes != KVATTR_INVALID && (attributes & KVATTR_READONLY) != 0;
}

}  // namespace kv::tool
