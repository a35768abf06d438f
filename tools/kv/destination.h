// Where a copy goes: nothing half-written is ever seen under its name.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace kv::tool {

class Destination {
public:
    Destination() = default;
    virtual ~Destination() = default;
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    /// False on failure, which is told; so do the others.
    virtual bool write(std::span<const char> bytes) = 0;
    /// Makes what was written the file. Without it, nothing changes at the destination.
    virtual bool finish() = 0;
};

struct NewFile {
    std::string locator;
    std::optional<std::uint64_t> size;            // what will come, if that is known
    std::optional<unsigned> mode = std::nullopt;  // the permissions of the source, if it has any
};

/// Nothing on failure, which is told.
std::unique_ptr<Destination> openDestination(const NewFile& file);

/// Whether the locator is of a kind that nothing can be copied to; that is told.
bool isNoDestination(const std::string& locator);

}  // namespace kv::tool
