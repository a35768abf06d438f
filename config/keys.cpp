// Keys and values as a whole: whether they are there, removing, renaming, copying, and paths with a number in them.
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

#include "border/text.h"
#include "config/store.h"

using namespace kv::config;
namespace border = kv::border;

std::uint32_t kvCFGKeyExists(KVTiXmlConfig* hConfig, const char* pPath) {
    return withElement(hConfig, pPath, 0u, [](KVTiXmlConfig&, TiXmlElement&) { return 1u; });
}

std::uint32_t kvCFGHasSubKey(KVTiXmlConfig* hConfig, const char* pPath) {
    return withElement(hConfig, pPath, 0u, [](KVTiXmlConfig&, TiXmlElement& element) {
        return element.FirstChildElement() != nullptr ? 1u : 0u;
    });
}

std::uint32_t kvCFGGetType(KVTiXmlConfig* hConfig, const char* pPath) {
    return withElement(hConfig, pPath, kFailed, [](KVTiXmlConfig&, TiXmlElement& element) {
        int type = -1;
        element.QueryIntAttribute("Type", &type);
        return static_cast<std::uint32_t>(type);
    });
}

std::uint32_t kvCFGDeleteValue(KVTiXmlConfig* hConfig, const char* pKey, const char* pName) {
    return withElement(hConfig, pKey, kFailed, [&](KVTiXmlConfig& store, TiXmlElement& key) -> std::uint32_t {
        TiXmlElement* element = GetKey(&key, pName);
        if (element == nullptr) return kFailed;
        // Meant: what a name with backslashes leads to is in another key, and stays.
        if (element->Parent() == &key && key.RemoveChild(element)) markModified(store);
        return 0;
    });
}

std::uint32_t kvCFGRenameKey(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, const char* pNewName) {
    return withElement(hConfig, pKey, kFailed, [&](KVTiXmlConfig& store, TiXmlElement& key) {
        TiXmlElement* element = GetKey(&key, pName);
        if (element == nullptr || !isTag(border::orEmpty(pNewName))) return kFailed;
        element->SetValue(pNewName);
        markModified(store);
        return static_cast<std::uint32_t>(std::strlen(pNewName));
    });
}

std::uint32_t kvCFGCopyBranch(KVTiXmlConfig* hConfig, const char* pPath, const char* pNewName) {
    return withElement(hConfig, pPath, kFailed, [&](KVTiXmlConfig& store, TiXmlElement& element) -> std::uint32_t {
        if (element.Parent() == nullptr || !isTag(border::orEmpty(pNewName))) return kFailed;
        std::unique_ptr<TiXmlNode> copy(element.Clone());
        if (copy == nullptr || copy->ToElement() == nullptr) return 0;
        copy->SetValue(pNewName);
        element.Parent()->LinkEndChild(copy.release());
        markModified(store);
        return 0;
    });
}

std::uint32_t kvCFGXmlToReg(KVTiXmlConfig*, const char*) { return 0; }

std::uint32_t CreateConfigStruct(KVTiXmlElement*, std::uint32_t) { return 0; }

char* RegBuildKey(char* pPath, std::int32_t nNumber, const char* pTail) {
    if (pPath == nullptr) return nullptr;
    char appended[border::kPathSize];
    const auto digits = std::to_chars(appended, appended + sizeof appended, nNumber);
    *digits.ptr = '\0';
    const bool fits = pTail == nullptr || (border::appendText(appended, sizeof appended, "\\") &&
                                           border::appendText(appended, sizeof appended, pTail));
    if (fits && border::appendText(pPath, border::kPathSize, appended)) return pPath;
    errno = ENAMETOOLONG;
    return nullptr;
}
