// A file of the library that is closed when its owner goes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kv::tool {

class OpenFile {
public:
    /// Opens what is there, for reading.
    static OpenFile forReading(const std::string& locator);
    /// Opens for writing, empty, whether or not it was there.
    static OpenFile forWriting(const std::string& locator);

    ~OpenFile() { close(); }
    OpenFile(OpenFile&& other) noexcept;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    OpenFile& operator=(OpenFile&&) = delete;

    bool isOpen() const;
    std::int64_t handle() const { return handle_; }
    /// False if the data may not have arrived. A second call does nothing and says true.
    bool close();

private:
    explicit OpenFile(std::int64_t handle) : handle_(handle) {}

    std::int64_t handle_;
};

/// The size in bytes of an open file; nothing if it does not tell.
std::optional<std::uint64_t> sizeOf(const OpenFile& file);

/// The size in bytes of the file that a locator names, however large; nothing if it does not tell.
std::optional<std::uint64_t> sizeOf(const std::string& locator);

}  // namespace kv::tool
