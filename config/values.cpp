// Numbers and texts.
//
// They differ where a value is missing: a number is made by the call that adds numbers, which tells what became of it;
// a text goes by whether its key was there.
#include <cstring>

#include "border/text.h"
#include "config/store.h"

namespace kv::config {

void replaceText(TiXmlElement& element, const char* text) {
    TiXmlNode* first = element.FirstChild();
    if (first == nullptr) {
        element.LinkEndChild(new TiXmlText(text));
    } else if (first->ToText() != nullptr) {
        element.ReplaceChild(first, TiXmlText(text));
    }
}

namespace {

constexpr const char* kValue = "Value";

std::uint32_t readDword(const TiXmlElement* element, std::uint32_t* value) {
    if (element == nullptr) return kFailed;
    if (value == nullptr) return 0;
    int number = 0;
    switch (element->QueryIntAttribute(kValue, &number)) {
        case TIXML_SUCCESS:
            *value = static_cast<std::uint32_t>(number);
            return 0;
        case TIXML_NO_ATTRIBUTE:
            *value = kFailed;
            return kFailed;
        default:
            return 0;  // no number: the caller's default stays. Meant.
    }
}

std::uint32_t writeDword(KVTiXmlConfig& store, TiXmlElement& element, std::uint32_t value) {
    const int wanted = static_cast<int>(value);
    int number = 0;
    if (element.QueryIntAttribute(kValue, &number) == TIXML_SUCCESS && number == wanted) return 0;
    element.SetAttribute(kValue, wanted);
    markModified(store);
    return 0;
}

void storeLength(std::uint32_t* length, std::size_t value) {
    if (length != nullptr) *length = static_cast<std::uint32_t>(value);
}

std::uint32_t readString(const TiXmlElement* element, char* buffer, std::uint32_t* length) {
    if (element == nullptr) return kFailed;
    const char* text = element->GetText();
    if (text == nullptr) return 0;
    const std::size_t size = std::strlen(text);
    storeLength(length, size);
    if (buffer == nullptr) return static_cast<std::uint32_t>(size);
    std::memcpy(buffer, text, size + 1);
    return 0;
}

std::uint32_t writeString(KVTiXmlConfig& store, TiXmlElement& element, const char* text, std::uint32_t* length) {
    const char* old = element.GetText();
    if (border::equalAnyCase(border::orEmpty(old), text)) return 0;
    replaceText(element, text);
    markModified(store);
    storeLength(length, std::strlen(text));
    return static_cast<std::uint32_t>(std::strlen(text));
}

std::uint32_t makeString(KVTiXmlConfig& store, const char* key, const char* name, const char* text, bool hasKey) {
    if (*text == '\0') return hasKey ? 0 : kFailed;
    const std::uint32_t added = addString(store, key, name, text, KVCFG_STRING, nullptr);
    return hasKey ? added : kFailed;  // meant: without the key a failure, although the value is made
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;

std::uint32_t kvCFGValueDword(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, std::uint32_t* pdwValue,
                              std::uint32_t fWrite) {
    return withStore(hConfig, kFailed, [&](KVTiXmlConfig& store) {
        TiXmlElement* element = GetKey(GetKey(store.pRoot, pKey), pName);
        if (fWrite == 0) return readDword(element, pdwValue);
        if (pdwValue == nullptr || pName == nullptr) return kFailed;
        return element == nullptr ? addDword(store, pKey, pName, *pdwValue, nullptr)
                                  : writeDword(store, *element, *pdwValue);
    });
}

std::uint32_t kvCFGValueString(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, char* pBuffer,
                               std::uint32_t* pdwLength, std::uint32_t fWrite) {
    return withStore(hConfig, kFailed, [&](KVTiXmlConfig& store) {
        TiXmlElement* key = GetKey(store.pRoot, pKey);
        TiXmlElement* element = GetKey(key, pName);
        if (fWrite == 0 || pBuffer == nullptr) return readString(element, pBuffer, pdwLength);
        if (pKey == nullptr || pName == nullptr) return kFailed;
        return element == nullptr ? makeString(store, pKey, pName, pBuffer, key != nullptr)
                                  : writeString(store, *element, pBuffer, pdwLength);
    });
}
