// UTF-8 to text of wide or 16-bit units.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/text.h"
#include "text/inputs.h"

namespace {

constexpr wchar_t kUntouched = 0x5A5A;

struct Decoded {
    std::wstring units;  // in as much room as the limit asks for, and one unit more
    std::uint32_t result;
    bool operator==(const Decoded&) const = default;
};

/// `bytes` without a terminator unless it holds one; both widths say the same.
Decoded decoded(const std::string& bytes, std::int64_t limit) {
    const std::vector<char> exact(bytes.begin(), bytes.end());
    const std::size_t room = static_cast<std::size_t>(limit > 0 ? limit : 0) + 1;
    std::wstring wide(room, kUntouched);
    std::vector<std::uint16_t> narrow(room, kUntouched);
    const std::uint32_t result = kvStr_UTF8_to_wchar(wide.data(), exact.data(), limit);
    EXPECT_EQ(kvStr_UTF8_to_UTF16(narrow.data(), exact.data(), limit), result);
    EXPECT_EQ(kvStr_UTF8_to_wchar(nullptr, exact.data(), limit), result);
    EXPECT_EQ(std::wstring(narrow.begin(), narrow.end()), wide);
    return {wide, result};
}

Decoded decodedByModel(const std::string& bytes, std::int64_t limit) {
    const auto most = static_cast<std::size_t>(limit > 0 ? limit : 0);
    const std::string text = bytes.substr(0, bytes.find('\0'));
    Decoded out{L"", 1};
    std::size_t i = 0;
    while (i < std::min(most, text.size())) {
        const unsigned lead = static_cast<unsigned char>(text[i++]);
        const unsigned form = lead / 16 == 14 ? 2 : lead / 32 == 6 ? 1 : 0;
        unsigned unit = form == 2 ? lead % 16 : form == 1 ? lead % 32 : lead;
        for (unsigned n = 0; n < form; ++n) {
            const unsigned next = i < text.size() ? static_cast<unsigned char>(text[i++]) : 0;
            if (next < 0x80 || next > 0xBF) out.result = 0;
            unit = unit * 64 + next % 64;
        }
        out.units += static_cast<wchar_t>(unit);
    }
    if (i < most) out.units += L'\0';
    out.units.resize(most + 1, kUntouched);
    return out;
}

Decoded text(const std::string& bytes) {
    Decoded out = decoded(bytes + '\0', static_cast<std::int64_t>(bytes.size()) + 1);
    out.units.resize(out.units.find(L'\0'));
    return out;
}

TEST(Utf8Decoding, EachFormHasItsUnit) {
    EXPECT_EQ(text("a\x7F"), (Decoded{L"a\x7F", 1}));
    EXPECT_EQ(text("\xC2\x80\xDF\xBF"), (Decoded{L"\x80\x7FF", 1}));
    EXPECT_EQ(text("\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF"), (Decoded{L"\x800\x20AC\xFFFF", 1}));
    EXPECT_EQ(text(""), (Decoded{L"", 1}));
}

TEST(Utf8Decoding, AFormOfFourBytesBecomesFourUnits) {
    EXPECT_EQ(text("\xF0\x9F\x98\x80"), (Decoded{L"\xF0\x9F\x98\x80", 1}));
}

TEST(Utf8Decoding, AContinuationByteAloneSurvives) { EXPECT_EQ(text("a\x80z"), (Decoded{L"a\x80z", 1})); }

TEST(Utf8Decoding, OverlongFormsAndSurrogatesAreTaken) {
    EXPECT_EQ(text("\xC1\x81"), (Decoded{L"A", 1}));
    EXPECT_EQ(text("\xED\xA0\xBD"), (Decoded{std::wstring(1, wchar_t{0xD83D}), 1}));
    EXPECT_EQ(decoded(std::string("\xC0\x80y\0", 4), 4).units, std::wstring(L"\0y\0", 3) + kUntouched + kUntouched);
}

TEST(Utf8Decoding, AMissingContinuationMakesTheResult0AndDecodingGoesOn) {
    EXPECT_EQ(text("\xC3"
                   "Az"),
              (Decoded{L"\xC1z", 0}));
    EXPECT_EQ(text("\xE2\x82"
                   "Az"),
              (Decoded{std::wstring{wchar_t{0x2081}, L'z'}, 0}));
}

TEST(Utf8Decoding, AFormThatTheEndCutReadsNothingBehindIt) {
    EXPECT_EQ(text("a\xC3"), (Decoded{L"a\xC0", 0}));
    EXPECT_EQ(text("a\xE2"), (Decoded{L"a\x2000", 0}));
    EXPECT_EQ(text("a\xE2\x82"), (Decoded{L"a\x2080", 0}));
}

TEST(Utf8Decoding, TheLimitCountsBytesOfTheSource) {
    EXPECT_EQ(decoded("\xC3\xA9\xC3\xA9\xC3\xA9", 4), (Decoded{{0xE9, 0xE9, kUntouched, kUntouched, kUntouched}, 1}));
    EXPECT_EQ(decoded("abc", 3), (Decoded{{L'a', L'b', L'c', kUntouched}, 1}));
    EXPECT_EQ(decoded(std::string("ab\0", 3), 3), (Decoded{{L'a', L'b', L'\0', kUntouched}, 1}));
}

TEST(Utf8Decoding, AFormThatBeginsAheadOfTheLimitIsFinished) {
    EXPECT_EQ(decoded("\xE2\x82\xAC", 1), (Decoded{{0x20AC, kUntouched}, 1}));
    EXPECT_EQ(decoded("\xE2\x82\xAC", 2), (Decoded{{0x20AC, kUntouched, kUntouched}, 1}));
    EXPECT_EQ(decoded("a\xC3\xA9", 2), (Decoded{{L'a', 0xE9, kUntouched}, 1}));
    EXPECT_EQ(decoded(std::string("\xE2\x82\0", 3), 1), (Decoded{{0x2080, kUntouched}, 0}));
}

TEST(Utf8Decoding, ALimitBelowOneWritesNothing) {
    for (const std::int64_t limit : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        EXPECT_EQ(decoded("abc", limit), (Decoded{{kUntouched}, 1}));
    }
}

TEST(Utf8Decoding, NullIsAnEmptyText) {
    wchar_t unit = kUntouched;
    EXPECT_EQ(kvStr_UTF8_to_wchar(&unit, nullptr, 1), 1u);
    EXPECT_EQ(unit, L'\0');
}

TEST(Utf8Decoding, TextsAtEveryLimitAreDecodedAsTheModelDoes) {
    kvtest::forManyTexts("A\xC3\xE2\xF0\x82\xBF", [](const std::string& bytes) {
        const auto size = static_cast<std::int64_t>(bytes.size());
        EXPECT_EQ(decoded(bytes + '\0', size + 1), decodedByModel(bytes + '\0', size + 1));
        for (std::int64_t limit = size > 20 ? size - 1 : 0; limit <= size; ++limit) {
            EXPECT_EQ(decoded(bytes + '\0', limit), decodedByModel(bytes, limit));
        }
    });
}

TEST(Utf8Decoding, EveryUnitButTheLastComesBack) {
    for (unsigned unit = 1; unit < 0xFFFF; ++unit) {
        const std::uint16_t source[] = {static_cast<std::uint16_t>(unit), 0};
        char bytes[8];
        std::uint16_t back[8];
        kvStr_UTF16_to_UTF8(bytes, source, sizeof bytes - 2);
        ASSERT_EQ(kvStr_UTF8_to_UTF16(back, bytes, 8), 1u);
        ASSERT_EQ(back[0], unit);
        ASSERT_EQ(back[1], 0);
    }
}

}  // namespace
