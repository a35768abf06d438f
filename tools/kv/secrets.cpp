// A secret of a store may hold slashes, so that it ends at the first "@"; the password of a URL ends ahead of the first
// slash, and what looks like one behind it is part of the path. The signature of a presigned URL gives access like
// both.
#include "kv/secrets.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>

#include "kvos/locator.h"

namespace kv::tool {
namespace {

struct Place {
    std::size_t begin;
    std::size_t end;
};

std::optional<Place> passwordIn(const std::string& locator) {
    constexpr std::string_view kSchemeEnd = "://";
    const std::size_t scheme = locator.find(kSchemeEnd);
    if (scheme == std::string::npos) return std::nullopt;
    const std::size_t login = scheme + kSchemeEnd.size();
    const std::size_t end = locator.find('@', login);
    const std::size_t colon = locator.find(':', login);
    if (end == std::string::npos || colon > end) return std::nullopt;
    const bool isUrl = kvOSFUseCurl(locator.c_str()) != 0 && kvOSUseAws(locator.c_str()) == 0;
    if (isUrl && locator.find('/', login) < end) return std::nullopt;
    return Place{colon + 1, end};
}

std::optional<Place> signatureIn(const std::string& locator) {
    constexpr std::string_view kName = "X-Amz-Signature=";
    const std::size_t name = locator.find(kName);
    if (name == std::string::npos) return std::nullopt;
    const std::size_t begin = name + kName.size();
    return Place{begin, std::min(locator.find('&', begin), locator.size())};
}

std::string hidden(std::string locator) {
    for (const auto find : {signatureIn, passwordIn}) {
        if (const auto secret = find(locator)) locator.replace(secret->begin, secret->end - secret->begin, "***");
    }
    return locator;
}

}  // namespace

std::string withoutSecrets(std::string_view text) {
    constexpr char kQuote = '\'';
    std::string shown;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(kQuote), text.size());
        shown += hidden(std::string(text.substr(0, end)));
        if (end < text.size()) shown += kQuote;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return shown;
}

void hideSecrets(int argc, char** argv) {
    for (char* const argument : std::span(argv, static_cast<std::size_t>(argc))) {
        for (const auto find : {signatureIn, passwordIn}) {
            if (const auto secret = find(argument)) std::fill(argument + secret->begin, argument + secret->end, '*');
        }
    }
}

}  // namespace kv::tool
