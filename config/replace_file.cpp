// A file replaced by rename.
//
// The new file is not pushed through to the disk: what is guarded against is the end of a process, not of the machine,
// for which the backups are there.
#include "config/replace_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "border/guard.h"

namespace kv::config {
namespace {

constexpr mode_t kUsualMode = 0666;  // less what the process masks
constexpr mode_t kModeBits = 07777;
constexpr int kMostNames = 100;

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = write(file, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

/// Closes in any case; true if both the bytes and the close went well.
bool writeAndClose(int file, std::string_view bytes) {
    if (writeAll(file, bytes)) return close(file) == 0;
    const border::KeepErrno keep;
    close(file);
    return false;
}

bool writeInPlace(const char* path, std::string_view bytes) {
    const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kUsualMode);
    return file >= 0 && writeAndClose(file, bytes);
}

/// A name beside the path that this process gives once. Others may have given it: a process of the same number that
/// was killed, or runs on another machine or in a container of its own.
std::string nameBeside(const std::string& path) {
    static std::atomic<unsigned> counter;
    return path + "." + std::to_string(getpid()) + "-" + std::to_string(counter.fetch_add(1)) + ".new";
}

/// Makes a new file beside the path; its name comes out in `name`. What is there under a name already, a link too, is
/// somebody else's: it is neither written nor removed.
int openBeside(const std::string& path, std::string& name) {
    int file = -1;
    for (int tries = 0; tries < kMostNames; ++tries) {
        name = nameBeside(path);
        file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kUsualMode);
        if (file >= 0 || errno != EEXIST) break;
    }
    return file;
}

/// The file behind a link, so that the link stays one; empty for a link to nothing.
std::string withoutLinks(const char* path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path, nullptr), std::free);
    if (resolved) return resolved.get();
    struct stat link;
    return lstat(path, &link) == 0 && S_ISLNK(link.st_mode) ? "" : path;
}

bool takesAfter(int file, const struct stat& old) {
    return fchown(file, old.st_uid, old.st_gid) == 0 && fchmod(file, old.st_mode & kModeBits) == 0;
}

bool canDoWithoutNewFile(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == ENAMETOOLONG || error == EEXIST;
}

}  // namespace

bool replaceFile(const char* path, std::string_view bytes) {
    const std::string target = withoutLinks(path);
    if (target.empty()) return writeInPlace(path, bytes);
    struct stat old;
    const bool exists = stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        errno = EINVAL;
        return false;
    }
    if (exists && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return false;

    std::string fresh;
    const int file = openBeside(target, fresh);
    if (file < 0) return canDoWithoutNewFile(errno) && writeInPlace(target.c_str(), bytes);
    if (exists && !takesAfter(file, old)) {
        close(file);
        unlink(fresh.c_str());
        return writeInPlace(target.c_str(), bytes);
    }
    if (writeAndClose(file, bytes) && std::rename(fresh.c_str(), target.c_str()) == 0) return true;
    const border::KeepErrno keep;
    unlink(fresh.c_str());
    return false;
}

}  // namespace kv::config
