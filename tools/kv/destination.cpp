// A local file is written beside its name and renamed when it is whole. A server gets the whole in one request, a store
// gets it in parts, and both are asked for it afterwards: the library's calls do not tell whether they took what they
// were sent.
#include "kv/destination.h"

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <strings.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "kv/complaint.h"
#include "kv/interruption.h"
#include "kv/open_file.h"
#include "kv/redirected.h"
#include "kv/source.h"
#include "kvos/file.h"
#include "kvos/rest.h"

namespace kv::tool {
namespace {

namespace fs = std::filesystem;

bool writeAll(const OpenFile& file, std::span<const char> bytes) {
    std::uint32_t written = 0;
    const auto count = static_cast<std::uint32_t>(bytes.size());
    kvOSSetLastError(0);
    return kvOSWriteFile(file.handle(), bytes.data(), count, &written, nullptr) != 0 && written == count;
}

bool closeWhole(OpenFile& file, const std::string& locator) {
    kvOSSetLastError(0);
    if (file.close()) return true;
    complainOf("finish", locator);
    return false;
}

/// What is no regular file, a device or a pipe, is written as it is.
class DirectFile : public Destination {
public:
    DirectFile(std::string locator, OpenFile file) : locator_(std::move(locator)), file_(std::move(file)) {}

    bool write(std::span<const char> bytes) override {
        if (writeAll(file_, bytes)) return true;
        complainOf("write", locator_);
        return false;
    }
    bool finish() override { return closeWhole(file_, locator_); }

private:
    std::string locator_;
    OpenFile file_;
};

class LocalFile : public Destination {
public:
    /// @param part    the name beside the final one, as the library takes it; `partPath` as the system does.
    LocalFile(std::string locator, std::string finalPath, std::string partPath, OpenFile part)
        : locator_(std::move(locator)),
          finalPath_(std::move(finalPath)),
          partPath_(std::move(partPath)),
          part_(std::move(part)),
          undo_(std::in_place, partPath_, "interrupted; '" + locator_ + "' is as it was") {}
    ~LocalFile() override {
        if (!isFinished_) unlink(partPath_.c_str());
    }

    bool write(std::span<const char> bytes) override {
        written_ += bytes.size();
        if (writeAll(part_, bytes)) return true;
        complainOf("write", locator_);
        return false;
    }

    bool finish() override {
        if (!closeWhole(part_, locator_) || !isWhole()) return false;
        const SignalsHeldBack heldBack;
        if (std::rename(partPath_.c_str(), finalPath_.c_str()) != 0) {
            complainOf("create", locator_);
            return false;
        }
        isFinished_ = true;
        undo_.reset();  // ahead of a signal that comes now: it would tell of a copy that was not made
        return true;
    }

private:
    bool isWhole() const {
        std::error_code error;
        if (fs::file_size(partPath_, error) == written_ && !error) return true;
        complain("cannot write '" + locator_ + "': not every byte arrived");
        return false;
    }

    std::string locator_;
    std::string finalPath_;
    std::string partPath_;
    OpenFile part_;
    std::uint64_t written_ = 0;
    bool isFinished_ = false;
    std::optional<Undo> undo_;
};

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

/// The permissions of what is replaced, else of the source, else the usual ones.
mode_t modeFor(const NewFile& file, const std::string& finalPath) {
    struct stat status {};
    if (stat(finalPath.c_str(), &status) == 0) return status.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return static_cast<mode_t>(file.mode.value_or(0666)) & 0777 & ~mask;
}

std::unique_ptr<Destination> openDirect(const std::string& locator) {
    OpenFile file = OpenFile::forWriting(locator);
    if (file.isOpen()) return std::make_unique<DirectFile>(locator, std::move(file));
    complainOf("create", locator);
    return nullptr;
}

std::unique_ptr<Destination> openBeside(const NewFile& file) {
    std::error_code error;
    std::string finalPath = redirected(file.locator);
    std::string folder = folderOf(file.locator);
    if (fs::is_symlink(finalPath, error)) {  // it is what the link leads to that is replaced
        finalPath = fs::weakly_canonical(finalPath, error).string();
        folder = folderOf(finalPath);
    }
    std::string partPath = redirected(folder + ".kv-XXXXXX");
    const SignalsHeldBack heldBack;  // until there is somebody who removes it
    const int descriptor = mkstemp(partPath.data());
    if (descriptor < 0) {
        complainOf("create", file.locator);
        return nullptr;
    }
    fchmod(descriptor, modeFor(file, finalPath));
    close(descriptor);
    OpenFile part = OpenFile::forWriting(folder + partPath.substr(partPath.rfind('/') + 1));
    if (part.isOpen()) return std::make_unique<LocalFile>(file.locator, finalPath, partPath, std::move(part));
    complainOf("create", file.locator);
    unlink(partPath.c_str());
    return nullptr;
}

std::unique_ptr<Destination> openLocal(const NewFile& file) {
    std::error_code error;
    const fs::file_status status = fs::status(redirected(file.locator), error);
    const bool isReplaceable = !fs::exists(status) || fs::is_regular_file(status);
    if (isReplaceable) return openBeside(file);
    return openDirect(file.locator);
}

// ---- servers -----------------------------------------------------------------------------------------------------

constexpr std::uint64_t kLargestBody = std::numeric_limits<std::uint32_t>::max() - 1;

bool isTooLarge(std::uint64_t bytes, const std::string& locator) {
    if (bytes <= kLargestBody) return false;
    complain("cannot write '" + locator + "': a server can be sent less than 4 GiB");
    return true;
}

class ServerFile : public Destination {
public:
    explicit ServerFile(std::string locator) : locator_(std::move(locator)) {}

    bool write(std::span<const char> bytes) override {
        if (isTooLarge(body_.size() + bytes.size(), locator_)) return false;
        body_.append(bytes.data(), bytes.size());
        return true;
    }

    bool finish() override {
        const Undo undo("", "interrupted; '" + locator_ + "' may be there, whole or in part, or not");
        return send() && isThere();
    }

private:
    bool send() {
        constexpr std::uint32_t kNoAnswer = std::numeric_limits<std::uint32_t>::max();
        const std::string url = redirected(locator_);
        char noHeaders[] = "";
        char* answer = nullptr;
        std::uint32_t length = kNoAnswer;
        kvOSSetLastError(0);
        kvOSHTTPCommand(url.c_str(), "PUT", noHeaders, body_.data(), static_cast<std::uint32_t>(body_.size()), &answer,
                        &length, 0);
        std::free(answer);
        if (length != kNoAnswer) return true;
        complainOf("write", locator_);
        return false;
    }

    bool isThere() const {
        auto copy = Source::open(locator_);
        if (!copy) return refused();
        std::size_t at = 0;
        for (;;) {
            const auto bytes = copy->next();
            if (!bytes) return refused();
            if (bytes->empty()) return at == body_.size() || refused();
            if (body_.compare(at, bytes->size(), bytes->data(), bytes->size()) != 0) return refused();
            at += bytes->size();
        }
    }

    bool refused() const {
        complain("cannot write '" + locator_ + "': the server was sent the file and does not have it");
        return false;
    }

    std::string locator_;
    std::string body_;
};

// ---- stores ------------------------------------------------------------------------------------------------------

/// A number that tells two contents apart, FNV-1a.
class Digest {
public:
    void add(std::span<const char> bytes) {
        for (const char byte : bytes) value_ = (value_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    bool operator==(const Digest&) const = default;

private:
    std::uint64_t value_ = 0xCBF29CE484222325;
};

/// The object appears when it is closed, in one piece or not at all.
class StoredFile : public Destination {
public:
    StoredFile(std::string locator, OpenFile file)
        : locator_(std::move(locator)), before_(sizeOf(locator_)), file_(std::move(file)) {}

    bool write(std::span<const char> bytes) override {
        written_ += bytes.size();
        if (before_) digest_.add(bytes);
        if (writeAll(file_, bytes)) return true;
        complainOf("write", locator_);
        return false;
    }

    bool finish() override {
        const Undo undo("", "interrupted; '" + locator_ + "' may be there, or as it was, beside parts of it");
        if (!closeWhole(file_, locator_)) return false;
        if (written_ == 0) return refused("a store keeps no file without content");
        if (sizeOf(locator_) != written_) return refused("the store does not have all of it");
        return before_ != written_ || isReplaced() || refused("the store still has the old one");
    }

private:
    /// Told by its content, where the old object was just as long.
    bool isReplaced() const {
        auto copy = Source::open(locator_);
        Digest stored;
        while (copy) {
            const auto bytes = copy->next();
            if (!bytes) return false;
            if (bytes->empty()) return stored == digest_;
            stored.add(*bytes);
        }
        return false;
    }

    bool refused(const std::string& why) const {
        complain("cannot write '" + locator_ + "': " + why);
        return false;
    }

    std::string locator_;
    std::optional<std::uint64_t> before_;  // the size of what is there already
    OpenFile file_;
    std::uint64_t written_ = 0;
    Digest digest_;
};

std::unique_ptr<Destination> openStored(const std::string& locator) {
    OpenFile file = OpenFile::forWriting(locator);
    if (file.isOpen()) return std::make_unique<StoredFile>(locator, std::move(file));
    complainOf("create", locator);
    return nullptr;
}

bool isInMemory(const std::string& locator) { return strncasecmp(locator.c_str(), "mem://", 6) == 0; }

bool isHttp(const std::string& locator) { return strncasecmp(redirected(locator).c_str(), "http", 4) == 0; }

}  // namespace

bool isNoDestination(const std::string& locator) {
    std::string why;
    if (isInMemory(locator)) why = "a file in memory ends with the command";
    if (isUrl(locator) && !isHttp(locator)) why = "only HTTP servers and disks can be written to";
    if (why.empty()) return false;
    complain("cannot write '" + locator + "': " + why);
    return true;
}

std::unique_ptr<Destination> openDestination(const NewFile& file) {
    if (isUrl(file.locator)) {
        if (isTooLarge(file.size.value_or(0), file.locator)) return nullptr;
        return std::make_unique<ServerFile>(file.locator);
    }
    if (isObject(file.locator)) return openStored(file.locator);
    return openLocal(file);
}

}  // namespace kv::tool
