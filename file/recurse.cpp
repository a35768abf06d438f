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
#include "kvos/attributes.h"
#include "kvos/find.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;

/// Closes a find handle when its scope ends, the last error kept.
class OpenSearch {
public:
    explicit OpenSearch(std::int64_t handle) : handle_(handle) {}
    ~OpenSearch() {
        const border::KeepErrno keep;
        kvOSFindClose(handle_);
    }
    OpenSearch(const OpenSearch&) = delete;
    OpenSearch& operator=(const OpenSearch&) = delete;

    std::int64_t handle() const { return handle_; }

private:
    std::int64_t handle_;
};

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
        if (border::copyText(path_, sizeof path_, directory)) return directoryInPath();
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
        const OpenSearch search(kvOSFindFirstFile(path_, &entry_));
        if (search.handle() == KVFIND_INVALID) return 0;

        Results results;
        do {
            path_[own] = '\0';
            const std::string_view name = entry_.szName;
            if (name == "." || name == "..") continue;
            const bool directory = isDirectory(entry_.dwAttributes);
            if (!append(name) || (directory && !append("/"))) return kFailed;
            if (directory) {
                visitDirectory(results);
            } else if (!visitFile(results)) {
                break;
            }
        } while (kvOSFindNextFile(search.handle(), &entry_) != 0);
        return results.final();
    }

    void visitDirectory(Results& results) {
        bool enter = (flags_ & KVRECURSE_SUBDIRECTORIES) != 0;
        if ((flags_ & KVRECURSE_REPORT_DIRECTORIES) != 0) {
            const std::uint32_t result = callback_(context_, path_, entry_.dwAttributes);
            results.take(result, true);
            enter = enter && result == 0;
        }
        if (enter) directoryInPath();
    }

    /// False when the callback ends the walk of this directory.
    bool visitFile(Results& results) {
        if ((flags_ & KVRECURSE_SKIP_FILES) != 0) return true;
        const std::uint32_t result = callback_(context_, path_, entry_.dwAttributes);
        results.take(result, false);
        return result == 0;
    }

    bool append(std::string_view text) {
        if (border::appendText(path_, sizeof path_, text)) return true;
        errno = ENAMETOOLONG;
        return false;
    }

    void* context_;
    kvOSRecurseCallback callback_;
    std::uint32_t flags_;
    kvOSFindData entry_;
    border::PathBuffer path_;
};

}  // namespace
}  // namespace kv::file

extern "C" uint32_t kvOSRecurseDirectory(void* pContext, const char* pDirectory, kvOSRecurseCallback pCallback,
                                         uint32_t dwFlags) {
    using namespace kv;
    if (pCallback == nullptr || pDirectory == nullptr) {
        errno = EINVAL;
        return file::kFailed;
    }
    return border::atBorder(file::kFailed, [&] { return file::Walk(pContext, pCallback, dwFlags).from(pDirectory); });
}
