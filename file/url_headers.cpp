#include "file/url_headers.h"

#include "border/text.h"

namespace kv::file {

std::string_view lastAnswer(std::string_view headers) {
    constexpr std::string_view kEnd = "\r\n\r\n";
    const std::size_t at = headers.rfind("\r\n\r\nHTTP/");
    return at == std::string_view::npos ? headers : headers.substr(at + kEnd.size());
}

std::optional<std::string> locationIn(std::string_view headers) {
    constexpr std::string_view kName = "Location:";
    const std::size_t at = border::findAnyCase(headers, kName);
    if (at == std::string_view::npos) return std::nullopt;
    std::string_view value = headers.substr(at + kName.size());
    if (value.starts_with(' ')) value.remove_prefix(1);
    const std::size_t end = value.find_first_of("\r\n");
    if (end == std::string_view::npos) return std::nullopt;
    return std::string(value.substr(0, end));
}

}  // namespace kv::file
