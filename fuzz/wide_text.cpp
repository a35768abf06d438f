// Bytes of any origin to wide text and to 16-bit units, and these back, at any limit.
//
// What must hold: no more than the limit's bytes are read and no more than its units written, both widths say the same,
// and measuring says what encoding does. The first byte is the limit's distance from the end of the text.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "kvos/text.h"
#include "kvos/wide_string.h"

namespace {

using kv::fuzz::must;

template <class Unit>
std::unique_ptr<Unit[]> room(std::int64_t units) {
    return std::unique_ptr<Unit[]>(new Unit[static_cast<std::size_t>(units > 0 ? units : 0)]());
}

void checkSame(const wchar_t* wide, const std::uint16_t* narrow, std::int64_t limit) {
    for (std::int64_t i = 0; i < limit; ++i) must(wide[i] == narrow[i], "both widths hold the same");
}

void encode(const std::uint16_t* units, std::int64_t limit) {
    const auto bytes = room<char>(limit + 2);
    const std::int64_t length = kvStr_UTF16_to_UTF8(bytes.get(), units, limit);
    must(length <= (limit > 0 ? limit : 0) + 3, "a form passes the limit by two bytes at most");
    must(kvStr_UTF16_to_UTF8(nullptr, units, limit) == length, "measuring says the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::vector<char> exact(data + 1, data + size);
    std::int64_t limit = static_cast<std::int64_t>(exact.size()) - data[0] % 8;

    const auto wide = room<wchar_t>(limit);
    const auto narrow = room<std::uint16_t>(limit);
    const std::uint32_t formed = kvStr_UTF8_to_wchar(wide.get(), exact.data(), limit);
    must(kvStr_UTF8_to_UTF16(narrow.get(), exact.data(), limit) == formed, "both widths judge the same");
    checkSame(wide.get(), narrow.get(), limit);
    const std::uint32_t plain = kvStr_ANSI_to_wchar(wide.get(), exact.data(), limit);
    must(kvStr_ANSI_to_UTF16(narrow.get(), exact.data(), limit) == plain, "both widths judge the same");
    checkSame(wide.get(), narrow.get(), limit);
    const auto back = room<char>(limit);
    kvStr_wchar_to_ANSI(back.get(), wide.get(), limit);
    if (limit > 0) {
        const std::size_t length = strnlen(exact.data(), static_cast<std::size_t>(limit));
        must(std::memcmp(back.get(), exact.data(), length) == 0, "widened bytes come back");
    }

    std::vector<std::uint16_t> units(exact.size() / 2 + 1);
    if (exact.size() > 1) std::memcpy(units.data(), exact.data(), exact.size() / 2 * 2);
    encode(units.data(), limit);
    const std::string text = wideToString(units.data());
    must(wideToString(stringToWide(text)) == text, "UTF-8 of units comes back");
    return 0;
}
