// Key files: lines of "name=value" in /etc/Korvane, one file a bucket and one for all others.
//
// They are opened like every file, through the redirect, which may lead to a store: reading keys for the reading of
// keys ends at once. No message shows what stands in them.
#include "file/s3/credentials.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "border/guard.h"
#include "border/secrets.h"
#include "border/text.h"
#include "errlog.h"
#include "file/open_reading.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/s3.h"

namespace kv::file::s3 {
namespace {

constexpr std::string_view kFolder = "/etc/Korvane/";
constexpr std::uint64_t kLargestKeyFile = 65536;  // each line is looked for in all that is left
constexpr std::size_t kTextSize = 256;            // of the caller's buffers

/// True while the thread reads a key file.
thread_local bool isReadingKeys = false;

class ReadingKeys {
public:
    ReadingKeys() { isReadingKeys = true; }
    ~ReadingKeys() { isReadingKeys = false; }
    ReadingKeys(const ReadingKeys&) = delete;
    ReadingKeys& operator=(const ReadingKeys&) = delete;
};

/// The path for a bucket, whose text brings a slash of its own, so that there are two.
std::string pathFor(const std::string& bucket) {
    const std::string own = std::string(kFolder) + bucket + ".csv";
    const std::string common = std::string(kFolder) + "rootkey.csv";
    return kvOSFileExists(own.c_str()) == 0 && kvOSFileExists(common.c_str()) != 0 ? common : own;
}

/// A locator without its scheme leaves its login in the bucket's text.
std::string shown(const std::string& path) {
    const std::size_t at = path.rfind('@');
    if (at == std::string::npos || at <= kFolder.size() + 1) return path;
    return std::string(kFolder).append(border::kHidden).append(path, at);
}

std::nullopt_t reportUnreadable(const std::string& path) {
    const border::KeepErrno keep;
    ErrOut("\nKeyFile<%s> UNABLE TO OPEN error = %d (0x%x) ", shown(path).c_str(), keep.value(),
           static_cast<unsigned>(keep.value()));
    return std::nullopt;
}

/// What stands behind the "=" of a name's line; empty for a line of another name.
std::string_view valueOf(std::string_view line, std::string_view name) {
    if (!line.substr(0, line.find('=')).starts_with(name) || line.size() <= name.size()) return {};
    return line.substr(name.size() + 1);
}

/// Takes the first name that the line is of and that has no value yet.
void takeLine(std::string_view line, KeyFile& keys) {
    const std::array<std::pair<std::string_view, std::string*>, 3> names{
        {{"AWSAccessKeyId", &keys.accessKey}, {"AWSSecretKey", &keys.secretKey}, {"AWSRegion", &keys.region}}};
    for (const auto& [name, value] : names) {
        const std::string_view found = valueOf(line, name);
        if (found.empty() || !value->empty()) continue;
        *value = found;
        return;
    }
}

bool isFull(const KeyFile& keys) { return !keys.accessKey.empty() && !keys.secretKey.empty() && !keys.region.empty(); }

/// A zero byte can hold the position of the reading; such a file ends there.
KeyFile keysIn(std::int64_t file, std::uint32_t size) {
    KeyFile keys;
    std::vector<char> line(size + 1);
    std::int64_t before = -1;
    for (std::int64_t at = kvOSTell(file); at != before && !isFull(keys); at = kvOSTell(file)) {
        before = at;
        if (kvOSfgets(line.data(), size + 1, file) == nullptr) break;
        takeLine(line.data(), keys);
    }
    return keys;
}

bool fits(const KeyFile& keys) {
    return keys.accessKey.size() < kTextSize && keys.secretKey.size() < kTextSize && keys.region.size() < kTextSize;
}

/// Closes the file when the scope ends.
class OpenKeyFile {
public:
    explicit OpenKeyFile(const std::string& path) : handle_(openForReading(path.c_str())) {}
    ~OpenKeyFile() {
        const border::KeepErrno keep;
        kvOSCloseFile(handle_);
    }
    OpenKeyFile(const OpenKeyFile&) = delete;
    OpenKeyFile& operator=(const OpenKeyFile&) = delete;

    bool isOpen() const { return handle_ != KVFILE_INVALID; }
    std::int64_t handle() const { return handle_; }

private:
    std::int64_t handle_;
};

std::optional<KeyFile> readKeyFile(const std::string& path) {
    const OpenKeyFile file(path);
    if (!file.isOpen()) return reportUnreadable(path);
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(file.handle(), &size);
    if (size > kLargestKeyFile) {
        errno = EFBIG;
        return reportUnreadable(path);
    }
    KeyFile keys = keysIn(file.handle(), static_cast<std::uint32_t>(size));
    if (fits(keys)) return keys;
    errno = ENAMETOOLONG;
    return reportUnreadable(path);
}

bool keysInto(char* accessKey, char* secretKey, char* region, const char* bucket) {
    const auto keys = keyFileOf(bucket);
    if (!keys) return false;
    border::copyText(accessKey, kTextSize, keys->accessKey);
    border::copyText(secretKey, kTextSize, keys->secretKey);
    border::copyText(region, kTextSize, keys->region);
    return true;
}

}  // namespace

std::optional<KeyFile> keyFileOf(const std::string& bucket) {
    if (isReadingKeys) {
        errno = ELOOP;
        return std::nullopt;
    }
    const ReadingKeys reading;
    const std::string path = pathFor(bucket);
    if (kvOSFileExists(path.c_str()) != 0) return readKeyFile(path);
    const border::KeepErrno keep;
    ErrOut("\nKeyFile<%s> Does not exist ", shown(path).c_str());
    return std::nullopt;
}

}  // namespace kv::file::s3

uint8_t kvOSAwsAccess(char* pAccessKey, char* pSecretKey, char* pRegion, const char* pBucket) {
    for (char* const output : {pAccessKey, pSecretKey, pRegion}) {
        if (output != nullptr) *output = '\0';
    }
    if (pAccessKey == nullptr || pSecretKey == nullptr || pRegion == nullptr || pBucket == nullptr) {
        errno = EINVAL;
        return 0;
    }
    return kv::border::atBorder<uint8_t>(
        0, [&]() -> uint8_t { return kv::file::s3::keysInto(pAccessKey, pSecretKey, pRegion, pBucket) ? 1 : 0; });
}
