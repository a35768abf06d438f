// What the document of the update server says of one product, and which of two versions is newer.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kv::system {

struct Version {
    std::uint32_t major;
    std::uint32_t minor;
    std::uint32_t build;
};

/// The newest version as the document gives it. The numbers are texts there.
struct Release {
    std::string major;
    std::string minor;
    std::string build;
    std::string url;
    std::string description;

    std::string version() const { return major + "." + minor + "." + build; }
    /// Decided by the first number that differs.
    bool isNewerThan(const Version& held) const;
};

/// Nothing if the product, the system or one of the numbers is not where it is sought.
std::optional<Release> releaseIn(std::string_view document, std::string_view product);

}  // namespace kv::system
