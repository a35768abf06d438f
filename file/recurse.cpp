// The walk over a directory tree on top of the find calls.
//
// One path buffer and one entry serve all levels: a level knows how much of the path is its own and cuts the rest off,
// so that a deep tree costs little stack.
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
        if (!append("/")) return kFailed;
        const std::size_t own = std::strlen(path_);
        if (!append("*.*")) return kFailed;
        Search search(path_, entry_);
        Results results;
        for (bool found = search.isOpen(); found; found = search.next()) {
            path_[own] = '\0';
            if (!visit(results)) return results.final();
        }
        leftOut_ = leftOut_ || errno == ENAMETOOLONG;
        return results.final();
    }

    /// False when the callback ends the walk of this directory.
    bool visit(Results& results) {
        const std::string_view name = entry_.szName;
        if (name == "." || name == "..") return true;
        const bool directory = isDirectory(entry_.dwAttributes);
        const bool isSlashed = name.ends_with('/');  // as the folders of a store are
        if (!append(name) || (directory && !isSlashed && !append("/"))) return true;
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

    /// What has no room in the path is left out, and the walk fails in the end, whichever level it was on.
    bool append(std::string_view text) {
        if (border::appendPath(path_, text)) return true;
        leftOut_ = true;
        return false;
    }

    void* context_;
    kvOSRecurseCallback callback_;
    std::uint32_t flags_;
    bool leftOut_ = false;
    kvOSFindData entry_;
    border::PathBuffer path_;
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
