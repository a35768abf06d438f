// Sequences on disk: how many files belong to one, and which comes first.
//
// Both calls compare the lengths of names, never their texts: two clips of equal length in one folder are one sequence
// to them. Numbers are compared as unsigned words, of which 0xFFFFFFFF means none.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "border/guard.h"
#include "border/text.h"
#include "kvos/naming.h"
#include "naming/append.h"
#include "naming/enumeration.h"
#include "naming/numbered_name.h"
#include "naming/path_parts.h"

namespace kv::naming {
namespace {

constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;

/// The name of an entry without its extension; empty for one that no path buffer holds.
std::string_view stemOf(const char* entry) {
    const auto parts = splitPath(entry, DriveRule::keep);
    return parts ? parts->name : std::string_view{};
}

std::size_t firstWildcard(std::string_view name) { return std::min(name.find_first_of("*?"), name.size()); }

/// The number that stands at an index of a name: 0 without digits there, all ones beyond 64 bits.
std::uint32_t numberAt(const char* name, std::size_t index) {
    const border::KeepErrno keep;
    return static_cast<std::uint32_t>(std::strtoll(name + std::min(index, std::strlen(name)), nullptr, 10));
}

/// The entries of a folder that count as one sequence, and how many digits their numbers have.
struct Members {
    std::vector<std::string> names;
    std::size_t digits = 0;
};

/// Takes every entry whose name without extension has that length. The digits are those of the first entry that has
/// any, member or not. They may come late in the enumeration, so that no number is read ahead of its end.
Members membersIn(const char* folder, std::size_t length) {
    Members members;
    border::PathBuffer pattern;
    replaceText(pattern, folder);
    if (!appendPieces(pattern, {"*"})) return members;
    Enumeration found(pattern);
    if (!found.isOpen()) return members;
    do {
        const std::string_view stem = stemOf(found.name());
        if (members.digits == 0) members.digits = readNumber(stem).digits;
        if (stem.size() == length) members.names.emplace_back(found.name());
    } while (found.next());
    return members;
}

/// Where the number of a name as long as `name` begins: that many digits ahead of its end or of its first wildcard, and
/// never ahead of the name.
std::size_t numberStart(std::string_view name, std::size_t digits) {
    const std::size_t end = firstWildcard(name);
    return end > digits ? end - digits : 0;
}

/// The name with the lowest number, the earliest of equals; null if all numbers are all ones.
const std::string* lowestOf(const std::vector<std::string>& names, std::size_t start) {
    const std::string* lowestName = nullptr;
    std::uint32_t lowest = kNoNumber;
    for (const std::string& name : names) {
        const std::uint32_t number = numberAt(name.c_str(), start);
        if (number >= lowest) continue;
        lowest = number;
        lowestName = &name;
    }
    return lowestName;
}

}  // namespace
}  // namespace kv::naming

namespace naming = kv::naming;
namespace border = kv::border;

std::uint32_t FindFilesNumber(const char* pPattern, std::uint32_t* pdwFirst, std::uint32_t* pdwDigits) {
    if (pdwFirst != nullptr) *pdwFirst = naming::kNoNumber;
    const auto pattern = naming::splitPath(pPattern, naming::DriveRule::keep);
    if (!pattern) return 0;
    naming::Enumeration found(pPattern);
    if (!found.isOpen()) return 0;
    const std::size_t length = naming::stemOf(found.name()).size();
    if (pdwDigits != nullptr) *pdwDigits = naming::readNumber(naming::stemOf(found.name())).digits;

    const std::size_t prefix = naming::firstWildcard(pattern->name);
    std::uint32_t count = 0;
    std::uint32_t lowest = naming::kNoNumber;
    do {
        if (naming::stemOf(found.name()).size() != length) continue;
        ++count;
        lowest = std::min(lowest, naming::numberAt(found.name(), prefix));
    } while (found.next());

    if (pdwFirst == nullptr) return count;
    *pdwFirst = lowest;
    return lowest + count;  // meant: one past the last number, not a count
}

std::uint32_t FindFistFilesNumber(const char* pPath, char* pFirstPath) {
    return border::atBorder(0u, [&]() -> std::uint32_t {
        const auto path = naming::splitPath(pPath, naming::DriveRule::split);
        // Meant: an entry's extension is never looked at, so that a path with one equals no entry.
        if (!path || !path->ext.empty()) return 0;
        border::PathBuffer folder;
        if (!naming::joinPath(folder, {path->drive, path->dir, {}, {}})) return 0;
        if (folder[0] == '\0') naming::replaceText(folder, "/");
        const naming::Members members = naming::membersIn(folder, path->name.size());
        const std::string* const lowest =
            naming::lowestOf(members.names, naming::numberStart(path->name, members.digits));
        if (lowest != nullptr && pFirstPath != nullptr) {
            if (!naming::appendPieces(folder, {*lowest})) return 0;
            naming::replaceText(pFirstPath, folder);
        }
        return static_cast<std::uint32_t>(members.names.size());
    });
}
