// The number of a language's code, and the code of a number.
#include "kvos/language.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "text/languages.h"

namespace kv::text {
namespace {

constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
constexpr std::size_t kReadBytes = 4;

using Code = std::array<char, kReadBytes>;

/// A code of the table as it looks once the case of its letters is masked away.
constexpr Code codeOf(std::string_view letters) {
    Code code{};
    std::ranges::copy(letters, code.begin());
    return code;
}

/// Letters lose their case by this mask, and a blank becomes the zero that ends a code.
constexpr Code masked(const char* text) {
    Code code{};
    for (std::size_t i = 0; i < code.size(); ++i) code[i] = static_cast<char>(text[i] & 0xDF);
    return code;
}

bool reads(const Language& language, const Code& code) {
    return std::ranges::any_of(language.read,
                               [&](std::string_view letters) { return !letters.empty() && codeOf(letters) == code; });
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::uint32_t kvOSLangStrToID(const char* pText, std::uint32_t* pdwId) {
    if (pText == nullptr || pdwId == nullptr) return text::kUnknown;
    const text::Code code = text::masked(pText);
    const auto* const row = std::ranges::find_if(
        text::kLanguages, [&](const text::Language& language) { return text::reads(language, code); });
    if (row == std::end(text::kLanguages)) return text::kUnknown;
    *pdwId = row->number;
    return 0;
}

std::uint32_t kvOSLangIDToStr(std::uint32_t dwId, std::uint32_t, char* pOut, std::uint32_t fTwoLetter) {
    const auto* const row = std::ranges::find(text::kLanguages, dwId, &text::Language::number);
    if (row == std::end(text::kLanguages) || pOut == nullptr) return text::kUnknown;
    const std::string_view letters = fTwoLetter != 0 ? row->twoLetters : row->threeLetters;
    *std::ranges::copy(letters, pOut).out = '\0';
    return 0;
}
