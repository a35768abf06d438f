// Local permissions go with a copy; nothing else of the source does.
#include "kv/copy_file.h"

#include <array>
#include <filesystem>
#include <optional>
#include <sys/stat.h>

#include "kv/complaint.h"
#include "kv/destination.h"
#include "kv/progress.h"
#include "kv/redirected.h"
#include "kvos/naming.h"

namespace kv::tool {
namespace {

namespace fs = std::filesystem;

bool isLocalFolder(const std::string& locator) {
    std::error_code error;
    return !isOnNetwork(locator) && fs::is_directory(redirected(locator), error);
}

/// The last part of a locator, without a query.
std::string nameOf(const std::string& locator) {
    std::array<char, 4096> name{};
    std::array<char, 4096> extension{};
    kvOSSplitPath(locator.c_str(), nullptr, nullptr, name.data(), extension.data());
    return std::string(name.data()) + extension.data();
}

std::optional<unsigned> modeOf(const std::string& locator) {
    struct stat status {};
    if (isOnNetwork(locator) || stat(redirected(locator).c_str(), &status) != 0) return std::nullopt;
    return S_ISREG(status.st_mode) ? std::optional<unsigned>(status.st_mode) : std::nullopt;
}

Exit copy(Source& source, std::optional<std::uint64_t> bytes, const NewFile& file) {
    const auto destination = openDestination(file);
    if (destination == nullptr) return Exit::failed;
    Progress progress(bytes);
    for (;;) {
        const auto block = source.next();
        if (!block) return Exit::failed;
        if (block->empty()) break;
        if (!destination->write(*block)) return Exit::failed;
        progress.add(block->size());
    }
    return destination->finish() ? Exit::ok : Exit::failed;
}

}  // namespace

std::string targetOf(const std::string& source, const std::string& destination) {
    const bool isFolderOfStore = destination.ends_with('/') && isObject(destination);
    if (!isFolderOfStore && !isLocalFolder(destination)) return destination;
    return destination + (destination.ends_with('/') ? "" : "/") + nameOf(source);
}

bool isRefused(const std::string& source, const std::string& destination) {
    if (isNoDestination(destination)) return true;
    std::error_code error;
    const bool areLocal = !isOnNetwork(source) && !isOnNetwork(destination);
    const bool areSame = areLocal ? fs::equivalent(redirected(source), redirected(destination), error) && !error
                                  : redirected(source) == redirected(destination);
    if (areSame) complain("'" + source + "' and '" + destination + "' are the same file");
    return areSame;
}

Exit copyFrom(Source& source, const std::string& destination) {
    return copy(source, source.size(), {destination, source.size(), modeOf(source.locator())});
}

Exit copyFrom(Source& source, std::uint64_t bytes, const std::string& destination) {
    return copy(source, bytes, {destination, bytes, modeOf(source.locator())});
}

}  // namespace kv::tool
