// Conversion by the locale of a code page, which the whole process has for as long as it takes.
#include <algorithm>
#include <array>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "border/guard.h"
#include "kvos/text.h"

namespace kv::text {
namespace {

const char* localeOf(std::uint32_t page) {
    constexpr std::array<const char*, 6> kNames{"", ".UTF-8", ".UTF-16", ".850", ".860", ".1252"};
    return page < kNames.size() ? kNames[page] : kNames[0];
}

/// Runs `convert` under the locale of a page and puts the locale back. An unknown name leaves it as it was.
template <class Convert>
const char* underPage(std::uint32_t page, Convert&& convert) {
    return border::atBorder<const char*>(nullptr, [&] {
        const std::string before = std::setlocale(LC_ALL, nullptr);
        std::setlocale(LC_ALL, localeOf(page));
        convert();
        return std::setlocale(LC_ALL, before.c_str());
    });
}

}  // namespace
}  // namespace kv::text

const char* kvStr_CodePage_to_wchar(wchar_t* pTarget, const char* pSource, std::int64_t nLimit, std::uint32_t dwPage) {
    return kv::text::underPage(dwPage, [&] {
        if (pTarget == nullptr || nLimit < 1) return;
        const char* const source = pSource == nullptr ? "" : pSource;
        // No text has more units than bytes, and C libraries add the limit to the target's address.
        std::mbstowcs(pTarget, source, std::min(static_cast<std::size_t>(nLimit), std::strlen(source) + 1));
    });
}

const char* kvStr_CodePage_to_UTF16(std::uint16_t*, const char*, std::int64_t, std::uint32_t dwPage) {
    return kv::text::underPage(dwPage, [] {});
}
