// Open files that close themselves, and whole contents in and out of them.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

#include "file/handle.h"
#include "kvos/file.h"

namespace kvtest {

class OwnedFile {
public:
    explicit OwnedFile(std::int64_t handle) : handle_(handle) {}
    ~OwnedFile() { close(); }
    OwnedFile(OwnedFile&& other) noexcept : handle_(std::exchange(other.handle_, KVFILE_INVALID)) {}
    OwnedFile(const OwnedFile&) = delete;
    OwnedFile& operator=(const OwnedFile&) = delete;

    std::int64_t handle() const { return handle_; }
    bool isOpen() const { return handle_ != KVFILE_INVALID && handle_ != 0; }
    const kvOSFileHandle& record() const { return *reinterpret_cast<const kvOSFileHandle*>(handle_); }
    std::uint32_t close() { return isOpen() ? kvOSCloseFile(std::exchange(handle_, KVFILE_INVALID)) : 0; }

private:
    std::int64_t handle_;
};

inline OwnedFile openFile(const std::string& path, std::uint32_t access, std::uint32_t creation,
                          std::uint32_t share = 1) {
    return OwnedFile(kvOSCreateFile(path.c_str(), access, share, nullptr, creation, 0, 0));
}

inline OwnedFile openForReading(const std::string& path) {
    return openFile(path, KVFILE_READ, KVFILE_OPEN_EXISTING, 3);
}

/// An existing file for reading and writing.
inline OwnedFile openForUpdate(const std::string& path) {
    return openFile(path, KVFILE_READ | KVFILE_WRITE, KVFILE_OPEN_EXISTING);
}

/// A new file for reading and writing, which takes any seek.
inline OwnedFile openNew(const std::string& path) {
    return openFile(path, KVFILE_READ | KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
}

inline void writeAll(const OwnedFile& file, std::string_view text) {
    std::uint32_t written = 0;
    ASSERT_EQ(kvOSWriteFile(file.handle(), text.data(), static_cast<std::uint32_t>(text.size()), &written, nullptr),
              1u);
    ASSERT_EQ(written, text.size());
}

/// What one read of `count` bytes gives.
inline std::string readSome(const OwnedFile& file, std::uint32_t count) {
    std::string text(count, '?');
    std::uint32_t got = 0;
    kvOSReadFile(file.handle(), text.data(), count, &got, nullptr);
    text.resize(got);
    return text;
}

/// The whole content from the start; the position is at the end afterwards.
inline std::string readAll(const OwnedFile& file) {
    kvOSSeek(file.handle(), 0);
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(file.handle(), &size);
    return readSome(file, static_cast<std::uint32_t>(size));
}

}  // namespace kvtest
