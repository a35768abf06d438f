// A text cut to a length, its end stripped, its letters made small or capital: all in place.
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "kvos/conversion.h"

namespace kv::text {
namespace {

/// Cuts in place; the length before it goes into `before`, the one behind it is the result.
std::size_t cut(char* text, std::uint64_t maxLength, std::uint64_t& before) {
    const std::size_t length = std::strlen(text);
    before = length;
    if (maxLength == 0 || length < maxLength) return length;
    text[maxLength] = '\0';
    return maxLength;
}

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

char* change(char* text, std::uint64_t limit, int (*letter)(int)) {
    for (std::uint64_t i = 0; text != nullptr && i < limit && text[i] != '\0'; ++i) {
        text[i] = static_cast<char>(letter(static_cast<unsigned char>(text[i])));
    }
    return text;
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::uint64_t strStripEnd(char* pText, std::uint64_t qwMaxLength) {
    if (pText == nullptr) return 0;
    std::uint64_t before = 0;
    std::size_t length = text::cut(pText, qwMaxLength, before);
    while (length > 0 && static_cast<unsigned char>(pText[length - 1]) <= 0x20) --length;
    pText[length] = '\0';
    return before;
}

std::uint64_t strStripEndSAFE(char* pText, std::uint64_t qwMaxLength) {
    if (pText == nullptr) return 0;
    std::uint64_t before = 0;
    text::cut(pText, qwMaxLength, before);
    return before;
}

char* kvStrToLower(char* pText) { return text::change(pText, text::kNoLimit, std::tolower); }

char* kvStrToUpper(char* pText) { return text::change(pText, text::kNoLimit, std::toupper); }

char* kvStrToLowerN(char* pText, std::uint64_t qwCount) { return text::change(pText, qwCount, std::tolower); }

char* kvStrToUpperN(char* pText, std::uint64_t qwCount) { return text::change(pText, qwCount, std::toupper); }
