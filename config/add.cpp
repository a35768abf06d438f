// New keys and values. A missing key is made with the keys above it, by a call of the same kind for its parent.
#include <algorithm>
#include <memory>

#include "config/limits.h"
#include "config/store.h"

namespace kv::config {
namespace {

/// Where the last name of a key begins, behind the backslash; 0 for a key without a parent. Meant: a backslash at the
/// very start is not one between two names.
std::size_t lastName(std::string_view key) {
    const std::size_t last = key.size() - (key.ends_with('\\') ? 2 : 1);
    for (std::size_t at = last; at >= 1 && at < key.size(); --at) {
        if (key[at] == '\\') return at + 1;
    }
    return 0;
}

/// Meant: a top key alone, whatever was to be added in it, and the store does not count as modified by it.
void makeTopKey(KVTiXmlConfig& store, std::string_view name) {
    if (!isTag(name)) return;
    auto key = std::make_unique<TiXmlElement>(std::string(name));
    key->SetAttribute("Type", static_cast<int>(KVCFG_KEY));
    key->LinkEndChild(new TiXmlText(""));
    store.pRoot->LinkEndChild(key.release());
}

/// The key, made if it is missing and has a parent; null if it isn't there in the end.
TiXmlElement* keyFor(KVTiXmlConfig& store, const char* key) {
    const std::string_view text = key;
    if (TiXmlElement* there = walk(*store.pRoot, text)) return there;
    if (text.empty() || static_cast<std::size_t>(std::ranges::count(text, '\\')) >= kDeepest) return nullptr;
    const std::size_t last = lastName(text);
    if (last == 0) {
        makeTopKey(store, text);
        return nullptr;
    }
    addString(store, std::string(text.substr(0, last - 1)).c_str(), key + last, "", KVCFG_KEY, nullptr);
    return walk(*store.pRoot, text);
}

bool isNewIn(TiXmlElement& key, const char* name) {
    return walk(key, name) == nullptr && isTag(name) && canHoldMore(key);
}

void link(KVTiXmlConfig& store, TiXmlElement& key, std::unique_ptr<TiXmlElement> element, const char* comment) {
    if (comment != nullptr) element->LinkEndChild(new TiXmlComment(comment));
    key.LinkEndChild(element.release());
    markModified(store);
}

/// Finds or makes the key and links what `make()` gives for the name.
template <class Make>
std::uint32_t add(KVTiXmlConfig& store, const char* key, const char* name, const char* comment, Make&& make) {
    if (key == nullptr || !isComment(comment)) return kFailed;
    TiXmlElement* parent = keyFor(store, key);
    // A missing top key fails even if it is all that was asked for. Meant.
    if (name == nullptr) return parent != nullptr || lastName(key) != 0 ? 0 : kFailed;
    if (parent == nullptr || !isNewIn(*parent, name)) return kFailed;
    link(store, *parent, make(), comment);
    return 0;
}

}  // namespace

bool isComment(const char* text) {
    return text == nullptr || std::string_view(text).find("-->") == std::string_view::npos;
}

std::uint32_t addDword(KVTiXmlConfig& store, const char* key, const char* name, std::uint32_t value,
                       const char* comment) {
    return add(store, key, name, comment, [&] {
        auto element = std::make_unique<TiXmlElement>(name);
        element->SetAttribute("Value", static_cast<int>(value));
        element->SetAttribute("Type", static_cast<int>(KVCFG_DWORD));
        return element;
    });
}

std::uint32_t addString(KVTiXmlConfig& store, const char* key, const char* name, const char* text, std::uint32_t type,
                        const char* comment) {
    return add(store, key, name, comment, [&] {
        auto element = std::make_unique<TiXmlElement>(name);
        element->SetAttribute("Type", static_cast<int>(type));
        if (text != nullptr) element->LinkEndChild(new TiXmlText(text));
        return element;
    });
}

}  // namespace kv::config

using namespace kv::config;

std::uint32_t kvCFGAddKeyDword(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, std::uint32_t dwValue,
                               const char* pComment) {
    return withStore(hConfig, kFailed,
                     [&](KVTiXmlConfig& store) { return addDword(store, pKey, pName, dwValue, pComment); });
}

std::uint32_t kvCFGAddKeyString(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, const char* pText,
                                std::uint32_t dwType, const char* pComment) {
    return withStore(hConfig, kFailed,
                     [&](KVTiXmlConfig& store) { return addString(store, pKey, pName, pText, dwType, pComment); });
}
