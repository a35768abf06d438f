// The whole use that the demonstration makes of an open file; each call is timed where it is made.
#include "demo/timed_file.h"

#include "kvos/file.h"

namespace demo {
namespace {

constexpr std::uint32_t kShareReading = 1;

std::int64_t open(const std::string& locator, TimedFile::Use use) {
    const std::uint32_t access = use == TimedFile::Use::read    ? KVFILE_READ
                                 : use == TimedFile::Use::write ? KVFILE_WRITE
                                                                : KVFILE_READ | KVFILE_WRITE;
    const std::uint32_t creation = use == TimedFile::Use::read ? KVFILE_OPEN_EXISTING : KVFILE_CREATE_ALWAYS;
    return kvOSCreateFile(locator.c_str(), access, kShareReading, nullptr, creation, 0, 0);
}

}  // namespace

TimedFile::TimedFile(const std::string& locator, Use use) : handle_(timed(time_, [&] { return open(locator, use); })) {}

bool TimedFile::isOpen() const { return handle_ != KVFILE_INVALID; }

bool TimedFile::attachOutput(const std::string& locator) {
    return timed(time_, [&] { return kvOSAddOutputFile(handle_, locator.c_str()); }) != 0;
}

bool TimedFile::read(std::span<std::byte> bytes) { return readSome(bytes) == bytes.size(); }

std::size_t TimedFile::readSome(std::span<std::byte> bytes) {
    std::uint32_t got = 0;
    const auto wanted = static_cast<std::uint32_t>(bytes.size());
    const auto result = timed(time_, [&] { return kvOSReadFile(handle_, bytes.data(), wanted, &got, nullptr); });
    return result != 0 ? got : 0;
}

bool TimedFile::write(std::span<const std::byte> bytes) {
    std::uint32_t put = 0;
    const auto wanted = static_cast<std::uint32_t>(bytes.size());
    const auto result = timed(time_, [&] { return kvOSWriteFile(handle_, bytes.data(), wanted, &put, nullptr); });
    return result != 0 && put == wanted;
}

bool TimedFile::seek(std::uint64_t position) {
    const auto target = static_cast<std::int64_t>(position);
    return timed(time_, [&] { return kvOSSeek(handle_, target); }) == target;
}

std::uint64_t TimedFile::size() {
    std::uint64_t size = 0;
    timed(time_, [&] { return kvOSGetFileSizeEx(handle_, &size); });
    return size;
}

bool TimedFile::close() {
    if (!isOpen()) return true;
    const std::int64_t handle = std::exchange(handle_, KVFILE_INVALID);
    return timed(time_, [&] { return kvOSCloseFile(handle); }) != 0;
}

}  // namespace demo
