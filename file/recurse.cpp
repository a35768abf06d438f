// The walk over a directory tree on top of the find calls.
//
// One path buffer, one pattern and one entry serve all levels: a level knows how much of the path is its own and cuts
// the rest off, so that a deep tree costs little stack.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "border/guard.h"
#include "border/text.h"
#include "file/null_argument.h"
#include "file/search.h"
#include "kvos/attributes.h"
#include "kvos/find.h"
#include "kvos/locator.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;

/// What the callbacks of one directory gave so far.
class Results {
public:
    void take(std::uint32_t result, bool ofDirectory) {
        last_ = result;
        if (ofDirectory && result == KVRECURSE_REMEMBERED) {
            remembered_ = result;
        } else if (result != 0) {
            remembered_ = 0;
        }
    }
    std::uint32_t final() const { return last_ != 0 ? last_ : remembered_; }

private:
    std::uint32_t last_ = 0;
    std::uint32_t remembered_ = 0;
};

bool isDirectory(std::uint32_t attributes) {
    return attributes != KVATTR_INVALID && (attributes & KVATTR_DIRECTORY) != 0;
}

class Walk {
public:
    Walk(void* context, kvOSRecurseCallback callback, std::uint32_t flags)
        : context_(context), callback_(callback), flags_(flags) {}

    std::uint32_t from(const char* directory) {
        if (!border::copyPath(path_, directory)) return kFailed;
        const std::uint32_t result = directoryInPath();
        if (!leftOut_) return result;
        errno = ENAMETOOLONG;
        return kFailed;
    }

private:
    /// Walks the directory whose text is in path_, and leaves path_ changed behind that text.
    std::uint32_t directoryInPath() {
        if (kvOSFileIsDir(path_) == 0) return kFailed;
        if (!append(path_, "/")) return kFailed;
        const std::size_t own = std::strlen(path_);
        if (!makePattern()) return kFailed;
        Search search(pattern_, entry_);
        Results results;
        for (bool found = search.isOpen(); found; found = search.next()) {
            path_[own] = '\0';
            if (!visit(results)) return results.final();
        }
        leftOut_ = leftOut_ || errno == ENAMETOOLONG;
        return results.final();
    }

    /// What finds all that the directory in path_ holds. In a local pattern a backslash quotes what follows it, so that
    /// one of the directory's own is quoted, too: without that the walk would be of another directory.
    bool makePattern() {
        std::string_view rest = path_;
        pattern_[0] = '\0';
        if (kvOSUseAws(path_) == 0) {
            for (std::size_t at; (at = rest.find('\\')) != std::string_view::npos; rest.remove_prefix(at + 1)) {
                if (!append(pattern_, rest.substr(0, at)) || !append(pattern_, "\\\\")) return false;
            }
        }
        return append(pattern_, rest) && append(pattern_, "*.*");
    }

    /// False when the callback ends the walk of this directory.
    bool visit(Results& results) {
        const std::string_view name = entry_.szName;
        if (name == "." || name == "..") return true;
        const bool directory = isDirectory(entry_.dwAttributes);
        const bool isSlashed = name.ends_with('/');  // as the folders of a store are
        if (!append(path_, name) || (directory && !isSlashed && !append(path_, "/"))) return true;
        if (!directory) return visitFile(results);
        visitDirectory(results);
        return true;
    }

    void visitDirectory(Results& results) {
        bool enter = (flags_ & KVRECURSE_SUBDIRECTORIES) != 0;
        if ((flags_ & KVRECURSE_REPORT_DIRECTORIES) != 0) {
            const std::uint32_t result = callback_(context_, path_, entry_.dwAttributes);
            results.take(result, true);
            enter = enter && result == 0;
        }
        if (enter) directoryInPath();  // meant: what that returns is ignored
    }

    bool visitFile(Results& results) {
        if ((flags_ & KVRECURSE_SKIP_FILES) != 0) return true;
        const std::uint32_t result = callback_(context_, path_, entry_.dwAttributes);
        results.take(result, false);
        return result == 0;
    }

    /// What has no room in a path is left out, and the walk fails in the end, whichever level it was on.
    bool append(border::PathBuffer& path, std::string_view text) {
        if (border::appendPath(path, text)) return true;
        leftOut_ = true;
        return false;
    }

    void* context_;
    kvOSRecurseCallback callback_;
    std::uint32_t flags_;
    bool leftOut_ = false;
    kvOSFindData entry_;
    border::PathBuffer path_;
    border::PathBuffer pattern_;
};

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::uint32_t kvOSRecurseDirectory(void* pContext, const char* pDirectory, kvOSRecurseCallback pCallback,
                                   std::uint32_t dwFlags) {
    if (pCallback == nullptr || pDirectory == nullptr) return file::refuseNull(file::kFailed);
    return kv::border::atBorder(file::kFailed,
                                [&] { return file::Walk(pContext, pCallback, dwFlags).from(pDirectory); });
}
