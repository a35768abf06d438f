// Drive, directory, name, extension: kvOSSplitPath and kvOSMakePath.
//
// The first character of a path is never looked at by the searches for "/" and ".". A path whose only "/" is its first
// character therefore counts as one without any, and gives the whole of itself as the directory.
#include "naming/path_parts.h"

#include <cerrno>
#include <cstring>

#include "border/text.h"
#include "kvos/locator.h"
#include "kvos/naming.h"
#include "naming/append.h"

namespace kv::naming {
namespace {

constexpr std::size_t kExtensionSize = 256;
constexpr std::size_t kDriveLength = 2;

/// Where a character of `wanted` stands last, the first character of `text` not counting; npos if nowhere.
std::size_t lastBehindFirst(std::string_view text, std::string_view wanted) noexcept {
    const std::size_t at = text.find_last_of(wanted);
    return at == 0 ? std::string_view::npos : at;
}

/// The part of the path that is taken apart: all of it, or what stands ahead of a network locator's query.
std::string_view withoutQuery(const char* path) noexcept {
    const std::string_view text = path;
    const std::size_t query = text.find('?');
    if (query == std::string_view::npos || kvOSIsNetworkFile(path) == 0) return text;
    return text.substr(0, query);
}

std::string_view extensionOf(std::string_view text) noexcept {
    const std::size_t at = lastBehindFirst(text, "/.");
    if (at == std::string_view::npos || text[at] == '/' || text.size() - at >= kExtensionSize) return {};
    return text.substr(at);
}

void store(char* target, std::string_view text) noexcept {
    if (target != nullptr) border::copyText(target, border::kPathSize, text);
}

}  // namespace

std::optional<PathParts> splitPath(const char* path, DriveRule rule) noexcept {
    if (path == nullptr) return std::nullopt;
    const std::string_view text = withoutQuery(path);
    PathParts parts;
    if (rule == DriveRule::split && text.size() >= kDriveLength && text[1] == ':') {
        parts.drive = text.substr(0, kDriveLength);
    }
    parts.dir = text.substr(parts.drive.size());
    if (!text.ends_with('/')) {
        parts.ext = extensionOf(text);
        parts.name = text.substr(0, text.size() - parts.ext.size());
        if (const std::size_t slash = lastBehindFirst(text, "/"); slash != std::string_view::npos) {
            parts.name.remove_prefix(slash + 1);
            parts.dir = text.substr(parts.drive.size(), slash + 1 - parts.drive.size());
        } else if (parts.name.starts_with('/')) {
            parts.name.remove_prefix(1);
        }
    }
    if (text.size() >= border::kPathSize || parts.dir.size() + slashBehind(parts.dir).size() >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    return parts;
}

bool joinPath(char* target, const PathParts& parts) noexcept {
    const std::string_view head = parts.dir.empty() ? parts.drive : parts.dir;
    const bool dotBefore = parts.name.ends_with('.');
    std::string_view ext = parts.ext;
    std::string_view dot;
    if (dotBefore && ext.starts_with('.')) ext.remove_prefix(1);
    if (!dotBefore && !ext.empty() && !ext.starts_with('.')) dot = ".";
    target[0] = '\0';
    return appendPieces(target, {parts.drive, parts.dir, slashBehind(head), parts.name, dot, ext});
}

}  // namespace kv::naming

namespace naming = kv::naming;

// Called for every directory entry: no heap, and nothing that throws.
void kvOSSplitPath(const char* pPath, char* pDrive, char* pDir, char* pName, char* pExt) {
    if (pPath == nullptr) return;
    const auto rule = pDrive != nullptr ? naming::DriveRule::split : naming::DriveRule::keep;
    const naming::PathParts parts = naming::splitPath(pPath, rule).value_or(naming::PathParts{});
    naming::store(pDrive, parts.drive);
    naming::store(pDir, parts.dir);
    if (pDir != nullptr) naming::appendPieces(pDir, {naming::slashBehind(parts.dir)});
    naming::store(pName, parts.name);
    naming::store(pExt, parts.ext);
}

void kvOSMakePath(char* pTarget, const char* pDrive, const char* pDir, const char* pName, const char* pExt) {
    if (pTarget == nullptr) return;
    using kv::border::orEmpty;
    naming::joinPath(pTarget, {orEmpty(pDrive), orEmpty(pDir), orEmpty(pName), orEmpty(pExt)});
}
