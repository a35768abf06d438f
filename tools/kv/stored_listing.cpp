// The library lists a folder whole and leaves patterns to its callers. What is no folder by its text is looked for
// among the names beside it.
#include "kv/stored_listing.h"

#include <array>
#include <cstddef>
#include <fnmatch.h>
#include <utility>

#include "kv/complaint.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/find.h"
#include "kvos/s3.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kEndOfSearch = 0xFFFFFFFF;

std::string keyOf(const std::string& locator) {
    std::array<char, 256> host{}, type{}, access{}, secret{};
    std::array<char, 4096> bucket{}, key{};
    kvOSAwsParse(locator.c_str(), host.data(), bucket.data(), key.data(), type.data(), access.data(), secret.data());
    return key.data();
}

StoredEntry entryOf(const kvOSFindData& data) {
    std::string name = data.szName;
    if (name.ends_with('/')) name.pop_back();
    const bool isFolder = (data.dwAttributes & KVATTR_DIRECTORY) != 0;
    return {std::move(name), isFolder, std::uint64_t{data.dwSizeHigh} << 32 | data.dwSizeLow};
}

/// The entries of a folder, whose locator ends in "/", under names that match.
StoredListing entriesIn(const std::string& folder, const std::string& names) {
    StoredListing listing;
    kvOSFindData data{};
    kvOSSetLastError(0);
    const std::int64_t find = kvOSFindFirstFile(folder.c_str(), &data);
    for (bool found = find != KVFIND_INVALID; found; found = kvOSFindNextFile(find, &data) != 0) {
        StoredEntry entry = entryOf(data);
        if (entry.name == "." || fnmatch(names.c_str(), entry.name.c_str(), 0) != 0) continue;
        listing.entries.push_back(std::move(entry));
    }
    const std::uint32_t error = kvOSGetLastError();
    if (find != KVFIND_INVALID) kvOSFindClose(find);
    if (error != kEndOfSearch || listing.entries.empty()) listing.whyNot = reasonOf(error);
    return listing;
}

bool isPattern(const std::string& name) { return name.find_first_of("*?[\\") != std::string::npos; }

}  // namespace

StoredListing listStore(const std::string& locator) {
    const std::string key = keyOf(locator);
    const bool isFolder = key.empty() || key.ends_with('/');
    const std::string name = isFolder ? "" : locator.substr(locator.rfind('/') + 1);
    const std::string folder =
        locator.substr(0, locator.size() - name.size()) + (isFolder && !locator.ends_with('/') ? "/" : "");
    constexpr std::size_t kOneLetter = 2;  // and the "/"
    if (key.size() - name.size() == kOneLetter) return {{}, "a folder of one letter can't be listed"};
    StoredListing listing = entriesIn(folder, isFolder ? "*" : name);
    const bool isOneFolder = listing.entries.size() == 1 && listing.entries.front().isFolder;
    return isOneFolder && !isFolder && !isPattern(name) ? listStore(locator + "/") : listing;
}

}  // namespace kv::tool
