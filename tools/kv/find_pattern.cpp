#include "kv/find_pattern.h"

#include "kv/redirected.h"

namespace kv::tool {

std::string withFolder(const std::string& name) {
    if (name.find('/', 1) != std::string::npos || isOnNetwork(name)) return name;
    return (name.starts_with('/') ? "/" : "./") + name;
}

std::string withoutQuotes(std::string_view name) {
    std::string text;
    for (const char character : name) {
        if (character == '\\') text += '\\';
        text += character;
    }
    return text;
}

std::string withName(std::string pattern) {
    const std::size_t name = pattern.rfind('/') + 1;  // 0 without a folder
    if (pattern.substr(name).starts_with('.') && !isOnNetwork(pattern)) pattern.insert(name, 1, '\\');
    return pattern;
}

std::string insideOf(const std::string& folder) { return folder.ends_with('/') ? folder + "*" : folder + "/*"; }

}  // namespace kv::tool
