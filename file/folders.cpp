// Directories by name: making and changing them, and the ones that applications rely on.
//
// The folder texts are literal on every system. The home directory always gets a "/" appended unseen, so that doubled
// slashes in the results are no slip.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "border/guard.h"
#include "border/text.h"
#include "file/network.h"
#include "file/null_argument.h"
#include "file/redirect.h"
#include "kvos/attributes.h"
#include "kvos/naming.h"
#include "platform/executable.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr mode_t kUsualMode = 0775;
constexpr std::uint32_t kPerUser = 1;
constexpr std::string_view kSystemConfigDir = "/Library/Application Support/Korvane/";
constexpr std::string_view kUserConfigDir = "Library/Application Support/Korvane/";
constexpr std::string_view kHttpdDir = "/var/www/html/";
constexpr std::string_view kHomeOfUnknownUser = "/var/tmp/";

/// Appends, or leaves the buffer empty, with errno ENAMETOOLONG, when that does not fit.
bool append(char* buffer, std::string_view text) {
    if (border::appendPath(buffer, text)) return true;
    buffer[0] = '\0';
    return false;
}

/// Leaves of a path its drive and directory, then `folder`, and a "/" at the end; false with an empty buffer if that
/// does not fit.
bool reduceToDirectory(char* buffer, std::string_view folder = {}) {
    border::PathBuffer drive;
    border::PathBuffer directory;
    kvOSSplitPath(buffer, drive, directory, nullptr, nullptr);
    buffer[0] = '\0';
    if (!append(buffer, drive) || !append(buffer, directory) || !append(buffer, folder)) return false;
    const std::string_view whole = buffer;
    return whole.empty() || whole.ends_with('/') || append(buffer, "/");
}

/// The home directory of the user database, empty if it names none there.
bool copyHomeOfUser(char* buffer) {
    std::vector<char> room(16384);
    struct passwd entry;
    struct passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, room.data(), room.size(), &found) == ERANGE) room.resize(2 * room.size());
    return append(buffer, found != nullptr ? border::orEmpty(found->pw_dir) : kHomeOfUnknownUser);
}

bool copyHome(char* buffer) {
    buffer[0] = '\0';
    const std::string_view home = border::orEmpty(std::getenv("HOME"));
    return home.empty() ? copyHomeOfUser(buffer) : append(buffer, home);
}

/// The home directory with a "/" appended, reduced to its directory, and a folder in it. An empty home gives an empty
/// text; false, with errno set, only for what does not fit or can't be told.
bool storeFolderOfHome(char* buffer, std::string_view folder) noexcept {
    const bool done = border::atBorder(false, [&] {
        if (!copyHome(buffer)) return false;
        return buffer[0] == '\0' || (append(buffer, "/") && reduceToDirectory(buffer, folder));
    });
    if (!done) buffer[0] = '\0';
    return done;
}

/// What the calls for the home directory and its folders answer: for them an empty home is a failure.
std::uint32_t folderOfHome(char* buffer, std::string_view folder) noexcept {
    if (buffer == nullptr) return refuseNull(kFailed);
    return storeFolderOfHome(buffer, folder) && buffer[0] != '\0' ? 0 : kFailed;
}

bool storeConfigDir(char* buffer, bool perUser) {
    if (!perUser) return border::copyPath(buffer, kSystemConfigDir);
    // Meant: below an empty home the folder is relative to the working directory.
    return storeFolderOfHome(buffer, {}) && append(buffer, kUserConfigDir);
}

bool existsOrIsMade(const char* directory) {
    return kvOSFileExists(directory) != 0 || kvOSMakeDir(directory, kUsualMode) == 0;
}

/// The file mode mask of the process is 0 while this lives, so that a directory gets its mode as asked. One at a time:
/// a second one would take the 0 of the first for the mask to restore.
class NoModeMask {
public:
    NoModeMask() : alone_(changing), before_(umask(0)) {}
    ~NoModeMask() { umask(before_); }
    NoModeMask(const NoModeMask&) = delete;
    NoModeMask& operator=(const NoModeMask&) = delete;

private:
    static inline constinit std::mutex changing;

    std::lock_guard<std::mutex> alone_;
    mode_t before_;
};

/// Whether the directory is there that one is to be made in; errno is what mkdir would leave where it is not.
bool hasParent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    const std::size_t slash = path.rfind('/');
    border::PathBuffer parent;
    struct stat status;
    border::copyPath(parent, slash == std::string_view::npos ? "." : path.substr(0, slash + 1));
    return stat(parent, &status) == 0;
}

std::int32_t makeDirectory(const char* path, std::uint32_t mode) {
    border::PathBuffer target;
    if (!redirected(path, target) || isNetworkPath(target)) return -1;
    // Each open of a URL looks for its token in folders that may not be there, and other threads make files meanwhile.
    if (!hasParent(target)) return -1;
    const NoModeMask noMask;
    return mkdir(target, mode == 0 ? kUsualMode : static_cast<mode_t>(mode & 0xFFFF));
}

std::int32_t changeDirectory(const char* path) {
    border::PathBuffer target;
    if (!redirected(path, target)) return -1;
    if (*path == '\0') {
        errno = ENOENT;
        return -1;
    }
    return chdir(target);
}

}  // namespace
}  // namespace kv::file

namespace border = kv::border;
namespace file = kv::file;

std::int32_t kvOSMakeDir(const char* pPath, std::uint32_t dwMode) {
    return border::atBorder(-1, [&] { return file::makeDirectory(pPath, dwMode); });
}

std::int32_t kvOSChangeDir(const char* pPath) {
    return border::atBorder(-1, [&] { return file::changeDirectory(pPath); });
}

std::uint32_t kvOSGetCWD(char* pBuffer) {
    if (pBuffer == nullptr) return file::refuseNull(file::kFailed);
    if (getcwd(pBuffer, border::kPathSize) != nullptr) return 0;
    if (errno == ERANGE) errno = ENAMETOOLONG;
    pBuffer[0] = '\0';
    return file::kFailed;
}

std::uint32_t kvOSGetAppDir(char* pBuffer) {
    if (pBuffer == nullptr) return file::refuseNull(file::kFailed);
    if (!kv::platform::executablePath(pBuffer, border::kPathSize)) kvOSGetCWD(pBuffer);
    file::reduceToDirectory(pBuffer);
    return 0;
}

std::int32_t kvOSGetConfigDir(char* pBuffer, std::uint32_t dwFlag) {
    if (pBuffer == nullptr) return file::refuseNull(-1);
    if ((dwFlag & file::kPerUser) == 0 && file::storeConfigDir(pBuffer, false) && file::existsOrIsMade(pBuffer)) {
        return 0;
    }
    return file::storeConfigDir(pBuffer, true) && file::existsOrIsMade(pBuffer) ? 0 : -1;
}

std::uint32_t kvOSGetHomeDir(char* pBuffer) { return file::folderOfHome(pBuffer, {}); }

std::uint32_t kvOSGetPicturesDir(char* pBuffer) { return file::folderOfHome(pBuffer, "/Pictures/"); }

std::uint32_t kvOSGetDocumentsDir(char* pBuffer) { return file::folderOfHome(pBuffer, "/Documents/"); }

std::uint32_t kvOSGetMoviesDir(char* pBuffer) { return file::folderOfHome(pBuffer, "/Videos/"); }

std::uint32_t kvOSGetMusicDir(char* pBuffer) { return file::folderOfHome(pBuffer, "/Music/"); }

std::uint32_t kvOSGetHTTPDDir(char* pBuffer) {
    if (pBuffer == nullptr) return file::refuseNull(file::kFailed);
    border::copyPath(pBuffer, file::kHttpdDir);
    return 0;
}
