// Extensions read and replaced.
//
// The two calls don't agree on what an extension is: ExtractFileExtension takes the first dot of the whole text and
// four characters, ChangeFileExtension what kvOSSplitPath takes.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "border/text.h"
#include "kvos/naming.h"
#include "naming/path_parts.h"

namespace naming = kv::naming;
namespace border = kv::border;

std::int32_t ExtractFileExtension(const char* pName, char* pExtension) {
    if (pName == nullptr || pExtension == nullptr) return -1;
    constexpr std::size_t kLongest = 4;
    const std::string_view name = pName;
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos) return -1;
    const std::string_view behind = name.substr(dot + 1, kLongest);
    border::copyText(pExtension, kLongest + 1, behind.substr(0, behind.find(';')));
    return 0;
}

std::int32_t ChangeFileExtension(char* pPath, const char* pNewExtension) {
    if (pPath == nullptr || pNewExtension == nullptr) return -1;
    auto parts = naming::splitPath(pPath, naming::DriveRule::split);
    if (!parts) return -1;
    parts->name = parts->name.substr(0, parts->name.find('*'));
    parts->ext = pNewExtension;
    border::PathBuffer changed;  // the parts are views into pPath
    if (!naming::joinPath(changed, *parts)) return -1;
    border::copyText(pPath, border::kPathSize, changed);
    return 0;
}
