// A path taken apart without copying, and joined again: what every call of this folder that looks inside a path uses.
#pragma once

#include <optional>
#include <string_view>

namespace kv::naming {

/// The parts, as views into the path. Each fits in its buffer: 4096 bytes with the directory's "/", 256 the extension.
struct PathParts {
    std::string_view drive;
    std::string_view dir;  // a "/" belongs behind it, whether or not it ends in one
    std::string_view name;
    std::string_view ext;
};

/// Whether "C:" is split off. Where it is not, it stays at the start of the directory.
enum class DriveRule { split, keep };

/// Takes a path apart; nothing for null, and, with errno ENAMETOOLONG, for one that is too long.
std::optional<PathParts> splitPath(const char* path, DriveRule rule) noexcept;

/// Joins the parts in `target`, 4096 bytes; too long, and it is left empty, errno is ENAMETOOLONG, the answer false.
bool joinPath(char* target, const PathParts& parts) noexcept;

}  // namespace kv::naming
