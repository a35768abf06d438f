// Strings of C++, by the conversions of the plain texts.
//
// These calls have the linkage of C++, being overloaded and giving objects. Each ends its exceptions at the border all
// the same.
#include "kvos/wide_string.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <string>

#include "border/guard.h"
#include "kvos/text.h"

namespace kv::text {
namespace {

/// `encode` is a call that measures for a null target.
template <class Unit>
std::string narrowed(const Unit* text, std::int64_t (*encode)(char*, const Unit*, std::int64_t)) {
    return border::atBorder(std::string(), [&] {
        std::string result(static_cast<std::size_t>(encode(nullptr, text, INT64_MAX)), '\0');
        encode(result.data(), text, static_cast<std::int64_t>(result.size()));
        result.pop_back();
        return result;
    });
}

std::wstring widened(const char* text) {
    return border::atBorder(std::wstring(), [&] {
        const std::size_t bytes = text == nullptr ? 0 : std::char_traits<char>::length(text);
        // No more units than bytes. An overlong zero ends the text as the terminator does.
        std::wstring result(bytes + 1, L'\0');
        kvStr_UTF8_to_wchar(result.data(), text, static_cast<std::int64_t>(result.size()));
        result.resize(std::char_traits<wchar_t>::length(result.c_str()));
        return result;
    });
}

std::wstring changed(const std::wstring& text, std::wint_t (*change)(std::wint_t)) {
    return border::atBorder(std::wstring(), [&] {
        std::wstring result(text);
        std::ranges::transform(result, result.begin(), [&](wchar_t unit) {
            return static_cast<wchar_t>(change(static_cast<std::wint_t>(unit)));
        });
        return result;
    });
}

/// A number by the caller's format, in a buffer of `Size` units; what does not fit is no text.
template <std::size_t Size, class Number>
std::wstring formatted(Number value, const wchar_t* format) {
    return border::atBorder(std::wstring(), [&] {
        wchar_t buffer[Size];
        if (format == nullptr || std::swprintf(buffer, Size, format, value) < 0) return std::wstring();
        return std::wstring(buffer);
    });
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::string wideToString(const std::wstring& text) { return wideToString(text.c_str()); }

std::string wideToString(const wchar_t* pText) { return text::narrowed(pText, kvStr_wchar_to_UTF8); }

std::string wideToString(const std::uint16_t* pText) { return text::narrowed(pText, kvStr_UTF16_to_UTF8); }

std::wstring stringToWide(const std::string& text) { return text::widened(text.c_str()); }

std::wstring stringToWide(const char* pText) { return text::widened(pText); }

std::wstring stringToWide(const unsigned char* pText) { return text::widened(reinterpret_cast<const char*>(pText)); }

std::wstring wStrToLower(const std::wstring& text) { return text::changed(text, std::towlower); }

std::wstring wStrToUpper(const std::wstring& text) { return text::changed(text, std::towupper); }

int wideToInt(const std::wstring& text) {
    return static_cast<int>(std::clamp<long long>(wideToLongLong(text), INT_MIN, INT_MAX));
}

long long wideToLongLong(const std::wstring& text) {
    const kv::border::KeepErrno before;
    return std::strtoll(wideToString(text).c_str(), nullptr, 10);
}

double wideToDouble(const std::wstring& text) {
    const kv::border::KeepErrno before;
    return std::strtod(wideToString(text).c_str(), nullptr);
}

std::wstring intToWStr(int nValue, const wchar_t* pFormat) { return text::formatted<20>(nValue, pFormat); }

std::wstring longLongToWStr(long long nValue, const wchar_t* pFormat) { return text::formatted<20>(nValue, pFormat); }

std::wstring doubleToWStr(double dValue, const wchar_t* pFormat) { return text::formatted<100>(dValue, pFormat); }
