// The walk along a path, the same in every call that takes one.
#include "config/walk.h"

#include <algorithm>

#include "config/limits.h"
#include "kvcfg.h"

namespace kv::config {
namespace {

/// The first one of that name; further ones are out of reach.
TiXmlElement* childOf(TiXmlElement& parent, std::string_view name) {
    for (TiXmlNode* child = parent.FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (child->Type() == TiXmlNode::TINYXML_ELEMENT && child->ValueTStr() == name) {
            return static_cast<TiXmlElement*>(child);
        }
    }
    return nullptr;
}

}  // namespace

TiXmlElement* walk(TiXmlElement& from, std::string_view path) {
    TiXmlElement* at = &from;
    std::string_view name;
    while (at != nullptr) {
        const std::size_t end = std::min(path.find('\\'), path.size());
        // Meant: behind a backslash with nothing between, the last name stands for itself once more.
        if (end > 0) name = path.substr(0, end);
        if (name.size() > kLongestName) return nullptr;
        at = childOf(*at, name);
        if (end == path.size()) break;
        path.remove_prefix(end + 1);
    }
    return at;
}

bool canHoldMore(const TiXmlNode& element) {
    std::size_t depth = 0;
    for (const TiXmlNode* at = &element; at != nullptr && at->Type() == TiXmlNode::TINYXML_ELEMENT; at = at->Parent()) {
        ++depth;
    }
    return depth < kDeepest;
}

}  // namespace kv::config

KVTiXmlElement* GetKey(KVTiXmlElement* pElement, const char* pPath) {
    return pElement == nullptr || pPath == nullptr ? nullptr : kv::config::walk(*pElement, pPath);
}
