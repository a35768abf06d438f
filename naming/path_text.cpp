// Paths as plain text: where the name and the extension begin, the root, one name appended, backslashes turned.
//
// Unlike kvOSSplitPath, SplitPathName and SplitPathExt take ":" for a separator wherever it stands, and MergePath takes
// one at the end of a path for it.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "border/text.h"
#include "kvos/naming.h"
#include "naming/append.h"

namespace kv::naming {
namespace {

bool isAsciiLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::size_t nameStart(std::string_view path) noexcept {
    const std::size_t separator = path.find_last_of("/:");
    return separator == std::string_view::npos ? 0 : separator + 1;
}

/// "//server/share" of a path that begins with "//": what stands ahead of the second "/" behind those two.
std::string_view serverAndShare(std::string_view path) noexcept {
    const std::size_t afterServer = path.find('/', 2);
    if (afterServer == std::string_view::npos) return path;
    return path.substr(0, path.find('/', afterServer + 1));
}

/// Built aside, so that a root that does not fit leaves the target alone, and one that lies in the path is read first.
char* storeRoot(char* target, std::string_view root) noexcept {
    border::PathBuffer whole;
    whole[0] = '\0';
    if (!appendPieces(whole, {root, "/"})) return nullptr;
    border::copyText(target, border::kPathSize, whole);
    return target;
}

}  // namespace
}  // namespace kv::naming

namespace naming = kv::naming;

char* SplitPathName(const char* pPath) {
    if (pPath == nullptr) return nullptr;
    return const_cast<char*>(pPath) + naming::nameStart(pPath);
}

char* SplitPathExt(const char* pPath) {
    char* const name = SplitPathName(pPath);
    if (name == nullptr) return nullptr;
    char* const dot = std::strrchr(name, '.');
    return dot != nullptr ? dot : name + std::strlen(name);
}

char* FixPathName(char* pPath) {
    if (pPath != nullptr) std::replace(pPath, pPath + std::strlen(pPath), '\\', '/');
    return pPath;
}

char* MergePath(char* pTarget, const char* pName) {
    if (pTarget == nullptr || pName == nullptr) return nullptr;
    const std::string_view path = pTarget;
    const std::string_view slash = path.ends_with(':') ? "" : naming::slashBehind(path);
    return naming::appendPieces(pTarget, {slash, pName}) ? pTarget : nullptr;
}

char* SplitPathRoot(char* pTarget, const char* pPath) {
    if (pTarget == nullptr || pPath == nullptr) return nullptr;
    const std::string_view path = pPath;
    const bool hasDrive = path.size() >= 2 && naming::isAsciiLetter(path[0]) && path[1] == ':';
    if (hasDrive) return naming::storeRoot(pTarget, path.substr(0, 2));
    if (path.starts_with("//")) return naming::storeRoot(pTarget, naming::serverAndShare(path));
    return nullptr;
}
