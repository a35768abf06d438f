// The five entities of XML.
//
// Meant: the decoder compares an entity with all that is left of the text, so that only the last thing of it is
// decoded.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "border/text.h"
#include "kvos/encoding.h"

namespace kv::text {
namespace {

struct Entity {
    char character;
    std::string_view text;
};

constexpr std::array<Entity, 5> kEntities{
    {{'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}, {'&', "&amp;"}}};

constexpr const Entity* entityOf(char c) {
    for (const Entity& entity : kEntities) {
        if (entity.character == c) return &entity;
    }
    return nullptr;
}

constexpr const Entity* entityIn(std::string_view text) {
    for (const Entity& entity : kEntities) {
        if (entity.text == text) return &entity;
    }
    return nullptr;
}

}  // namespace
}  // namespace kv::text

std::uint64_t kvEncodeXMLString(const char* pInput, char* pOutput) {
    if (pOutput == nullptr) return 0;
    char* out = pOutput;
    for (const char c : kv::border::orEmpty(pInput)) {
        const kv::text::Entity* const entity = kv::text::entityOf(c);
        const std::string_view written = entity == nullptr ? std::string_view(&c, 1) : entity->text;
        std::memcpy(out, written.data(), written.size());
        out += written.size();
    }
    *out = '\0';
    return static_cast<std::uint64_t>(out - pOutput);
}

std::uint64_t kvDecodeXMLString(const char* pInput, char* pOutput) {
    if (pOutput == nullptr) return 0;
    const std::string_view input = kv::border::orEmpty(pInput);
    const std::size_t last = input.rfind('&');
    const std::string_view tail = last == std::string_view::npos ? std::string_view{} : input.substr(last);
    const kv::text::Entity* const entity = kv::text::entityIn(tail);
    std::size_t length = entity == nullptr ? input.size() : last;
    if (length != 0) std::memmove(pOutput, input.data(), length);
    if (entity != nullptr) pOutput[length++] = entity->character;
    pOutput[length] = '\0';
    return length;
}
