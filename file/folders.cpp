// Directories by name: making and changing them, and the ones that applications rely on.
//
// The folder texts are literal on every system. The home directory always gets a "/" appended unseen, so that doubled
// slashes in the results are no slip.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "border/guard.h"
#include "border/text.h"
#include "file/network.h"
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

bool append(char* buffer, std::string_view text) {
    if (border::appendText(buffer, border::kPathSize, text)) return true;
    buffer[0] = '\0';
    errno = ENAMETOOLONG;
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

/// The home directory with a "/" appended, reduced to its directory, and a folder in it.
std::uint32_t folderOfHome(char* buffer, std::string_view folder) noexcept {
    if (buffer == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    const bool done = border::atBorder(false, [&] {
        return copyHome(buffer) && buffer[0] != '\0' && append(buffer, "/") && reduceToDirectory(buffer, folder);
    });
    if (done) return 0;
    buffer[0] = '\0';
    return kFailed;
}

bool storeConfigDir(char* buffer, bool perUser) {
    if (!perUser) return border::copyText(buffer, border::kPathSize, kSystemConfigDir);
    return kvOSGetHomeDir(buffer) == 0 && append(buffer, kUserConfigDir);
}

bool existsOrIsMade(const char* directory) {
    return kvOSFileExists(directory) != 0 || kvOSMakeDir(directory, kUsualMode) == 0;
}

/// The file mode mask of the process is 0 while this lives, so that a directory gets its mode as asked.
class NoModeMask {
public:
    NoModeMask() : before_(umask(0)) {}
    ~NoModeMask() { umask(before_); }
    NoModeMask(const NoModeMask&) = delete;
    NoModeMask& operator=(const NoModeMask&) = delete;

private:
    mode_t before_;
};

std::int32_t makeDirectory(const char* path, std::uint32_t mode) {
    border::PathBuffer target;
    if (!redirected(path, target) || isNetworkPath(target)) return -1;
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

using namespace kv;
using namespace kv::file;

extern "C" {

int32_t kvOSMakeDir(const char* pPath, uint32_t dwMode) {
    return border::atBorder(-1, [&] { return makeDirectory(pPath, dwMode); });
}

int32_t kvOSChangeDir(const char* pPath) {
    return border::atBorder(-1, [&] { return changeDirectory(pPath); });
}

uint32_t kvOSGetCWD(char* pBuffer) {
    if (pBuffer == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    if (getcwd(pBuffer, border::kPathSize) != nullptr) return 0;
    if (errno == ERANGE) errno = ENAMETOOLONG;
    pBuffer[0] = '\0';
    return kFailed;
}

uint32_t kvOSGetAppDir(char* pBuffer) {
    if (pBuffer == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    if (!platform::executablePath(pBuffer, border::kPathSize)) kvOSGetCWD(pBuffer);
    reduceToDirectory(pBuffer);
    return 0;
}

int32_t kvOSGetConfigDir(char* pBuffer, uint32_t dwFlag) {
    if (pBuffer == nullptr) {
        errno = EINVAL;
        return -1;
    }
    if ((dwFlag & kPerUser) == 0 && storeConfigDir(pBuffer, false) && existsOrIsMade(pBuffer)) return 0;
    return storeConfigDir(pBuffer, true) && existsOrIsMade(pBuffer) ? 0 : -1;
}

uint32_t kvOSGetHomeDir(char* pBuffer) { return folderOfHome(pBuffer, {}); }

uint32_t kvOSGetPicturesDir(char* pBuffer) { return folderOfHome(pBuffer, "/Pictures/"); }

uint32_t kvOSGetDocumentsDir(char* pBuffer) { return folderOfHome(pBuffer, "/Documents/"); }

uint32_t kvOSGetMoviesDir(char* pBuffer) { return folderOfHome(pBuffer, "/Videos/"); }

uint32_t kvOSGetMusicDir(char* pBuffer) { return folderOfHome(pBuffer, "/Music/"); }

uint32_t kvOSGetHTTPDDir(char* pBuffer) {
    if (pBuffer == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    border::copyText(pBuffer, border::kPathSize, kHttpdDir);
    return 0;
}

}  // extern "C"
