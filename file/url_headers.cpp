#include "file/url_headers.h"

#include <algorithm>
#include <strings.h>

namespace kv::file {

std::string_view lastAnswer(std::string_view headers) {
    constexpr std::string_view kEnd = "\r\n\r\n";
    const std::size_t at = headers.rfind("\r\n\r\nHTTP/");
    return at == std::string_view::npos ? headers : headers.substr(at + kEnd.size());
}

std::optional<std::string> locationIn(std::string_view headers) {
    constexpr std::string_view kName = "Location:";
    const auto same = [](char one, char other) { return strncasecmp(&one, &other, 1) == 0; };
    const auto* const found = std::search(headers.begin(), headers.end(), kName.begin(), kName.end(), same);
    if (found == headers.end()) return std::nullopt;
    std::string_view value = headers.substr(static_cast<std::size_t>(found - headers.begin()) + kName.size());
    if (value.starts_with(' ')) value.remove_prefix(1);
    const std::size_t end = value.find_first_of("\r\n");
    if (end == std::string_view::npos) return std::nullopt;
    return std::string(value.substr(0, end));
}

}  // namespace kv::file
