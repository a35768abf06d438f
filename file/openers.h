// The kinds of locators in the order in which an open tries them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "file/handle.h"

namespace kv::file {

/// One call of kvOSCreateFile.
struct OpenRequest {
    const char* path;        // as the caller gave it
    const char* redirected;  // after the configured redirect
    std::uint32_t access;
    std::uint32_t share;
    void* security;
    std::uint32_t creation;
    std::uint32_t flags;
    std::int64_t templateHandle;
};

/// Opens what the request names, or gives kInvalidHandle; nullopt declines, and the next in the list is asked.
using Opener = std::optional<std::int64_t> (*)(const OpenRequest&);

std::optional<std::int64_t> openMemory(const OpenRequest& request);
std::optional<std::int64_t> openUrl(const OpenRequest& request);
std::optional<std::int64_t> openLocal(const OpenRequest& request);  // never declines

std::span<const Opener> openers();

/// Tells of a failed open, the last error being its reason.
void reportFailedOpen(const OpenRequest& request, const char* path);

/// A zeroed record that holds the kind and the arguments of the open; null when memory is short.
kvOSFileHandle* newRecord(std::uint32_t type, const OpenRequest& request);

}  // namespace kv::file
