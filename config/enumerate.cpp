// Walks through keys: by name, one step a call, and by recursion.
#include <cstring>
#include <string>
#include <vector>

#include "border/text.h"
#include "config/limits.h"
#include "config/store.h"

namespace kv::config {
namespace {

constexpr std::size_t kInfoSize = 32768;

bool isReachable(const TiXmlElement& element) { return element.ValueStr().size() <= kLongestName; }

/// The first child, or the first behind the previous one that is named otherwise.
const TiXmlElement* nextIn(const TiXmlElement& key, std::string_view previous) {
    const TiXmlElement* at = key.FirstChildElement();
    if (!previous.empty()) {
        while (at != nullptr && at->ValueTStr() != previous) at = at->NextSiblingElement();
        while (at != nullptr && at->ValueTStr() == previous) at = at->NextSiblingElement();
    }
    while (at != nullptr && !isReachable(*at)) at = at->NextSiblingElement();
    return at;
}

std::string fullPath(const TiXmlElement& element) {
    std::string path = element.ValueStr();
    for (const TiXmlNode* at = element.Parent(); at != nullptr && at->ToElement() != nullptr; at = at->Parent()) {
        if (at->ValueStr() == "KorvaneConfig") break;
        path.insert(0, at->ValueStr() + "\\");
    }
    return path;
}

struct InfoBuffers {
    std::vector<char> name = std::vector<char>(kInfoSize);
    std::vector<char> value = std::vector<char>(kInfoSize);
    std::uint32_t number = 0;
};

void visit(TiXmlElement& element, InfoBuffers& buffers, bool recursive) {
    for (TiXmlElement* child = element.FirstChildElement(); child != nullptr; child = child->NextSiblingElement()) {
        const std::uint32_t type = KeyInfo(child, buffers.name.data(), buffers.value.data(), &buffers.number, 0);
        if (recursive && type == KVCFG_KEY) visit(*child, buffers, recursive);
    }
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;
namespace border = kv::border;

std::uint32_t KeyInfo(KVTiXmlElement* pElement, char* pName, char* pValue, std::uint32_t* pdwValue,
                      std::uint32_t fFullPath) {
    if (pElement == nullptr) return 0;
    return border::atBorder(0u, [&] {
        int type = 0;
        pElement->QueryIntAttribute("Type", &type);
        const auto kind = static_cast<std::uint32_t>(type);
        if (kind == KVCFG_STRING && pValue != nullptr) {
            border::copyText(pValue, kInfoSize, border::orEmpty(pElement->GetText()));
        }
        int number = 0;
        if (kind == KVCFG_DWORD && pdwValue != nullptr &&
            pElement->QueryIntAttribute("Value", &number) == TIXML_SUCCESS) {
            *pdwValue = static_cast<std::uint32_t>(number);
        }
        if (pName != nullptr) {
            border::copyText(pName, kInfoSize, fFullPath != 0 ? fullPath(*pElement) : pElement->ValueStr());
        }
        return kind;
    });
}

// Nothing is stored in the references. Meant.
std::uint32_t EnumKey(KVTiXmlElement* pElement, std::uint32_t&, std::uint32_t&, std::uint32_t fRecursive) {
    if (pElement == nullptr) return 0;
    return border::atBorder(0u, [&] {
        InfoBuffers buffers;
        visit(*pElement, buffers, fRecursive != 0);
        return 1u;
    });
}

std::uint32_t kvCFGEnumKey(KVTiXmlConfig* hConfig, const char* pKey, std::uint32_t* pdwFirst, std::uint32_t* pdwSecond,
                           std::uint32_t fRecursive) {
    return withStore(hConfig, kFailed, [&](KVTiXmlConfig& store) {
        TiXmlElement* key = border::orEmpty(pKey).empty() ? store.pRoot : GetKey(store.pRoot, pKey);
        if (key == nullptr) return kFailed;
        std::uint32_t unused = 0;
        return EnumKey(key, pdwFirst == nullptr ? unused : *pdwFirst, pdwSecond == nullptr ? unused : *pdwSecond,
                       fRecursive);
    });
}

std::uint32_t kvCFGGetNext(KVTiXmlConfig* hConfig, const char* pKey, char* pName, const char* pPrevious,
                           std::uint32_t* pdwType) {
    return withStore(hConfig, kFailed, [&](KVTiXmlConfig& store) {
        const TiXmlElement* key = pKey == nullptr ? store.pRoot : GetKey(store.pRoot, pKey);
        const TiXmlElement* next = key == nullptr ? nullptr : nextIn(*key, border::orEmpty(pPrevious));
        if (next == nullptr || pName == nullptr || next->ValueStr().empty()) return kFailed;
        border::copyText(pName, kLongestName + 1, next->ValueStr());
        int type = 0;
        if (pdwType != nullptr && next->QueryIntAttribute("Type", &type) == TIXML_SUCCESS) {
            *pdwType = static_cast<std::uint32_t>(type);
        }
        return static_cast<std::uint32_t>(next->ValueStr().size());
    });
}
