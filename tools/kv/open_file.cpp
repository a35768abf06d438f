// The last error is set to 0 ahead of each open, since a refusal of the library's own need not set one.
#include "kv/open_file.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "kv/redirected.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kShareReading = 1;
constexpr std::uint32_t kShareAll = 3;
constexpr std::uint64_t kUnknownSize = ~std::uint64_t{0};

/// Local files are not opened for their size: that would need the right to read, and touch their time of access.
std::optional<std::uint64_t> sizeOnDisk(const std::string& path) {
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(redirected(path), error);
    return error ? std::nullopt : std::optional(size);
}

}  // namespace

OpenFile OpenFile::forReading(const std::string& locator) {
    kvOSSetLastError(0);
    return OpenFile(kvOSCreateFile(locator.c_str(), KVFILE_READ, kShareAll, nullptr, KVFILE_OPEN_EXISTING, 0, 0));
}

OpenFile OpenFile::forWriting(const std::string& locator) {
    kvOSSetLastError(0);
    return OpenFile(kvOSCreateFile(locator.c_str(), KVFILE_WRITE, kShareReading, nullptr, KVFILE_CREATE_ALWAYS, 0, 0));
}

OpenFile::OpenFile(OpenFile&& other) noexcept : handle_(std::exchange(other.handle_, KVFILE_INVALID)) {}

bool OpenFile::isOpen() const { return handle_ != KVFILE_INVALID && handle_ != 0; }

bool OpenFile::close() {
    if (!isOpen()) return true;
    return kvOSCloseFile(std::exchange(handle_, KVFILE_INVALID)) != 0;
}

std::optional<std::uint64_t> sizeOf(const OpenFile& file) {
    std::uint64_t size = kUnknownSize;
    if (!file.isOpen() || kvOSGetFileSizeEx(file.handle(), &size) == 0 || size == kUnknownSize) return std::nullopt;
    return size;
}

std::optional<std::uint64_t> sizeOf(const std::string& locator) {
    return isOnNetwork(locator) ? sizeOf(OpenFile::forReading(locator)) : sizeOnDisk(locator);
}

}  // namespace kv::tool
