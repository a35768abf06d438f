// Bytes, stored as two hexadecimal digits each.
#include <cstring>
#include <optional>
#include <vector>

#include "config/store.h"

namespace kv::config {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::string_view kDigits = "0123456789ABCDEF";

std::optional<unsigned> digit(char character) {
    if (character >= 'a' && character <= 'f') character = static_cast<char>(character - ('a' - 'A'));
    const std::size_t at = kDigits.find(character);
    if (at == std::string_view::npos) return std::nullopt;
    return static_cast<unsigned>(at);
}

/// The bytes of all pairs; nothing if anything else is among them. A lone last digit counts for nothing.
std::optional<Bytes> decode(std::string_view text) {
    Bytes bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
        const auto high = digit(text[at]);
        const auto low = digit(text[at + 1]);
        if (!high || !low) return std::nullopt;
        bytes.push_back(static_cast<unsigned char>(*high << 4 | *low));
    }
    return bytes;
}

std::string encode(const unsigned char* bytes, std::size_t count) {
    std::string text;
    text.reserve(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0xF];
    }
    return text;
}

std::uint32_t readBytes(const TiXmlElement* element, void* buffer, std::uint32_t* length) {
    if (element == nullptr) return kFailed;
    const char* text = element->GetText();
    if (text == nullptr || buffer == nullptr) return 0;
    const auto bytes = decode(text);
    if (!bytes) return kFailed;
    if (!bytes->empty()) std::memcpy(buffer, bytes->data(), bytes->size());
    const auto count = static_cast<std::uint32_t>(bytes->size());
    if (length != nullptr) *length = count;
    return count;
}

/// Meant: only as many bytes are compared as the old text holds, so that a value that goes on behind them is equal.
bool beginsWithOld(const TiXmlElement& element, const unsigned char* bytes, std::size_t count) {
    const char* text = element.GetText();
    if (text == nullptr || std::strlen(text) < 2) return false;
    const auto old = decode(text);
    return old && old->size() <= count && std::memcmp(old->data(), bytes, old->size()) == 0;
}

constexpr std::uint32_t kMostBytes = 0x7FFFFFFF;  // twice as many digits still fit in the result

std::uint32_t writeBytes(KVTiXmlConfig& store, const char* key, const char* name, const unsigned char* bytes,
                         std::uint32_t& length) {
    TiXmlElement* parent = walk(*store.pRoot, key);
    if (parent == nullptr) {
        addString(store, key, name, "", KVCFG_BINARY, nullptr);
        return 0;  // meant: the bytes are stored only under a key that was there
    }
    if (walk(*parent, name) == nullptr) addString(store, key, name, "", KVCFG_BINARY, nullptr);
    TiXmlElement* element = walk(*parent, name);
    if (element == nullptr) return kFailed;
    if (beginsWithOld(*element, bytes, length)) return 0;
    const std::string text = encode(bytes, length);
    replaceText(*element, text.c_str());
    markModified(store);
    length = static_cast<std::uint32_t>(text.size());
    return length;
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;

std::uint32_t kvCFGValueBinary(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, void* pBuffer,
                               std::uint32_t* pdwLength, std::uint32_t fWrite) {
    KVTiXmlConfig* store = kvCFGCheckHandle(hConfig);
    if (!isOpened(store)) return 0;
    return withStore(store, kFailed, [&](KVTiXmlConfig& opened) {
        if (fWrite == 0) {
            TiXmlElement* key = GetKey(opened.pRoot, pKey);
            return key == nullptr ? 0 : readBytes(GetKey(key, pName), pBuffer, pdwLength);
        }
        const bool isComplete = pKey != nullptr && pName != nullptr && pBuffer != nullptr && pdwLength != nullptr;
        if (!isComplete || *pdwLength > kMostBytes) return kFailed;
        return writeBytes(opened, pKey, pName, static_cast<const unsigned char*>(pBuffer), *pdwLength);
    });
}
