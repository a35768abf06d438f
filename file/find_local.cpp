// Local directories by glob.
//
// The extension ".*" stands for "any or none", and a leading "*" for "hidden or not", neither of which glob itself
// says: both are further runs that append to the first. An entry is therefore found twice if two of the runs match it.
#include "file/find_local.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <strings.h>
#include <sys/stat.h>

#include "border/guard.h"
#include "border/text.h"
#include "file/null_argument.h"
#include "file/search.h"
#include "kvos/attributes.h"
#include "kvos/memory.h"
#include "kvos/naming.h"
#include "platform/file_times.h"
#include "platform/glob_files.h"

namespace kv::file {
namespace {

constexpr int kNoFlags = 0;

// ---- what a pattern asks for -------------------------------------------------------------------------------------

struct Pattern {
    border::PathBuffer directory;
    char hiddenName[border::kPathSize + 1];  // the name with a "." ahead of it
    border::PathBuffer extension;

    const char* name() const { return hiddenName + 1; }
    bool anyExtension() const { return std::string_view(extension) == ".*"; }
    bool anyBeginning() const { return name()[0] == '*'; }
    bool anyEnd() const { return std::string_view(name()).ends_with('*'); }
};

/// Takes the pattern apart; false, with errno set, for one that can't be searched for.
bool parsePattern(const char* text, Pattern& pattern) {
    pattern.hiddenName[0] = '.';
    kvOSSplitPath(text, nullptr, pattern.directory, pattern.hiddenName + 1, pattern.extension);
    if (*text != '\0' && pattern.directory[0] == '\0') {
        errno = ENAMETOOLONG;
        return false;
    }
    if (pattern.name()[0] == '\0' || std::strpbrk(pattern.directory, "*?") != nullptr) {
        errno = kEndOfSearch;
        return false;
    }
    return true;
}

/// One run over the name, and one over its hidden form if it begins with "*". `flags` is for the first; the second
/// always appends.
bool globNames(const Pattern& pattern, const char* extension, int flags, glob_t& found) {
    if (FILEGlobFromSplitPath(pattern.directory, pattern.name(), extension, flags, &found) != 0) return false;
    return !pattern.anyBeginning() ||
           FILEGlobFromSplitPath(pattern.directory, pattern.hiddenName, extension, platform::kGlobAppend, &found) == 0;
}

bool globPattern(const Pattern& pattern, glob_t& found) {
    // A name that ends in "*" already matches whatever extension there is, once the extension is left out.
    const bool nameIsEnough = pattern.anyExtension() && pattern.anyEnd();
    if (!nameIsEnough && !globNames(pattern, pattern.extension, kNoFlags, found)) return false;
    if (!pattern.anyExtension()) return true;
    return globNames(pattern, "", nameIsEnough ? kNoFlags : platform::kGlobAppend, found);
}

// ---- one run of glob ---------------------------------------------------------------------------------------------

/// Room for a pattern in which every character is quoted.
using QuotedPattern = char[2 * border::kPathSize];

char* appendQuoted(char* out, std::string_view part) {
    for (const char character : part) {
        if (character == '[' || character == ']') *out++ = '\\';
        *out++ = character;
    }
    return out;
}

/// 0 for the last component ".", 1 for "..", 2 for all others.
int rankOf(std::string_view path) {
    const std::string_view last = path.substr(path.rfind('/') + 1);
    if (last == ".") return 0;
    return last == ".." ? 1 : 2;
}

int comparePaths(const char* a, const char* b) {
    const int byText = strcasecmp(a, b);
    if (byText == 0) return 0;
    const int byRank = rankOf(a) - rankOf(b);
    return byRank != 0 ? byRank : byText;
}

/// Sorts all paths, given that the first `before` of them most likely are sorted: large directories arrive nearly in
/// order, and what a further run appended is merged in.
void sortPaths(glob_t& found, std::size_t before) {
    const auto precedes = [](const char* a, const char* b) { return comparePaths(a, b) < 0; };
    char** const first = found.gl_pathv;
    char** const middle = first + std::min(before, static_cast<std::size_t>(found.gl_pathc));
    char** const last = first + found.gl_pathc;
    if (!std::is_sorted(first, middle, precedes)) std::stable_sort(first, middle, precedes);
    if (!std::is_sorted(middle, last, precedes)) std::stable_sort(middle, last, precedes);
    std::inplace_merge(first, middle, last, precedes);
}

std::int32_t globParts(std::string_view directory, std::string_view name, std::string_view extension, int flags,
                       glob_t& found) {
    if (directory.size() + name.size() + extension.size() >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return GLOB_ABORTED;
    }
    QuotedPattern pattern;
    char* end = appendQuoted(appendQuoted(appendQuoted(pattern, directory), name), extension);
    *end = '\0';
    const bool appends = (flags & platform::kGlobAppend) != 0;
    const std::size_t before = appends ? static_cast<std::size_t>(found.gl_pathc) : 0;
    const int result = platform::globFiles(pattern, flags | platform::kGlobBackslashQuotes, found);
    if (found.gl_pathv != nullptr && found.gl_pathc > 0) sortPaths(found, before);
    return result;
}

// ---- one entry ---------------------------------------------------------------------------------------------------

kvOSFileTime fileTimeOf(const timespec& time) {
    const std::uint64_t units =
        FILEUnixTimeToFileTime(static_cast<std::uint64_t>(time.tv_sec), static_cast<std::uint64_t>(time.tv_nsec));
    return {static_cast<std::uint32_t>(units), static_cast<std::uint32_t>(units >> 32)};
}

bool isDirectory(const kvOSFindData& entry) {
    return entry.dwAttributes != KVATTR_INVALID && (entry.dwAttributes & KVATTR_DIRECTORY) != 0;
}

/// The last component of what a path holds beyond the length of another one.
std::string_view nameBeyond(std::string_view other, std::string_view path) {
    const std::string_view beyond = path.substr(std::min(other.size(), path.size()));
    return beyond.substr(beyond.rfind('/') + 1);
}

/// Stores the name of an entry. A name may come out empty: behind "http:/" a "?" begins a query, which is no name. A
/// directory is then named by what its path holds beyond the length of the first path found.
void storeName(kvOSFindData& entry, const char* path, const char* firstPath) {
    border::PathBuffer extension;
    kvOSSplitPath(path, nullptr, nullptr, entry.szName, extension);
    border::appendText(entry.szName, sizeof entry.szName, extension);
    if (entry.szName[0] == '\0' && isDirectory(entry)) {
        border::copyText(entry.szName, sizeof entry.szName, nameBeyond(firstPath, path));
    }
}

/// False for a path that has no status any more, not even that of a dangling link.
bool storeStatus(kvOSFindData& entry, const char* path) {
    struct stat status;
    if (stat(path, &status) != 0 && lstat(path, &status) != 0) return false;
    const platform::FileTimes times = platform::fileTimes(status);
    entry.ftCreation = fileTimeOf(times.statusChange);
    entry.ftAccess = fileTimeOf(times.access);
    entry.ftWrite = fileTimeOf(times.modification);
    entry.dwSizeHigh = 0;
    entry.dwSizeLow = static_cast<std::uint32_t>(status.st_size);
    return true;
}

}  // namespace

void EndLocalSearch::operator()(LocalSearch* search) const noexcept {
    const border::KeepErrno keep;
    search->~LocalSearch();
    KVFree(search);
}

LocalSearchOwner LocalSearch::begin(const char* text) {
    Pattern pattern;
    if (!parsePattern(text, pattern)) return nullptr;
    void* const block = KVAlloc(sizeof(LocalSearch));
    if (block == nullptr) return nullptr;
    LocalSearchOwner search(new (block) LocalSearch);
    errno = 0;  // what an earlier call left must not pass for the reason of this one
    if (!globPattern(pattern, search->found_)) {
        if (errno != ENAMETOOLONG) errno = kEndOfSearch;
        return nullptr;
    }
    if (search->found_.gl_pathc == 0) {
        errno = kEndOfSearch;
        return nullptr;
    }
    return search;
}

LocalSearch::~LocalSearch() {
    self_ = nullptr;
    globfree(&found_);
}

bool LocalSearch::next(kvOSFindData& entry) noexcept {
    while (cursor_ < found_.gl_pathc) {
        const char* const path = found_.gl_pathv[cursor_++];
        if (std::strlen(path) >= border::kPathSize) {
            leftOut_ = true;
            continue;
        }
        entry.dwAttributes = kvOSGetFileAttributes(path);
        storeName(entry, path, found_.gl_pathv[0]);
        if (storeStatus(entry, path)) return true;
    }
    errno = leftOut_ ? ENAMETOOLONG : kEndOfSearch;
    return false;
}

}  // namespace kv::file

namespace border = kv::border;
namespace file = kv::file;

std::int32_t FILEGlobFromSplitPath(const char* pDirectory, const char* pName, const char* pExtension,
                                   std::int32_t nFlags, glob_t* pGlob) {
    if (pGlob == nullptr) return file::refuseNull(GLOB_ABORTED);
    return border::atBorder(GLOB_NOSPACE, [&] {
        return file::globParts(border::orEmpty(pDirectory), border::orEmpty(pName), border::orEmpty(pExtension), nFlags,
                               *pGlob);
    });
}

std::int32_t FILEGlobQsortCompare(const void* pA, const void* pB) {
    return file::comparePaths(*static_cast<char* const*>(pA), *static_cast<char* const*>(pB));
}
