// Formatted reports say what the C library's own formatter says, whichever conversions they use.
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "diag/log_reader.h"
#include "errlog.h"

namespace {

class Format : public kvtest::LogTest {
protected:
    /// The same format and arguments through both.
    template <class... Argument>
    void check(const char* format, Argument... arguments) {
        std::string expected(4096, '\0');
        std::snprintf(expected.data(), expected.size(), format, arguments...);
        ErrLogSetMode(-1, nullptr);
        ErrOut(format, arguments...);
        EXPECT_EQ("[" + kvtest::get(0).text + "]", "[" + std::string(expected.c_str()) + "]") << format;
        ErrFmtOut(7, nullptr, 0, format, arguments...);
        EXPECT_EQ(kvtest::get(1).text, expected.c_str()) << format;
    }
};

}  // namespace

TEST_F(Format, WholeNumbers) {
    for (const char* format : {"<%d>",   "<%i>",    "<%u>",    "<%x>",     "<%X>",  "<%08X>", "<%03d>",       "<%00d>",
                               "<%01x>", "<%020u>", "<%099d>", "<%0100d>", "<%5d>", "<%-5d>", "<%+d>",        "<% d>",
                               "<%#x>",  "<%.3d>",  "<%hd>",   "<%hhu>",   "<%o>",  "<%c%d>", "<0x%08X (%d)>"}) {
        for (const int value : {0, 1, -1, 9, 10, 255, -255, 65535, INT_MAX, INT_MIN, INT_MIN + 1}) {
            check(format, value, value);
        }
    }
    for (const char* format : {"<%ld>", "<%li>", "<%lu>", "<%lx>", "<%lX>", "<%016lX>", "<%012ld>", "<%jd>", "<%zu>"}) {
        for (const long value : {0L, 7L, -7L, LONG_MAX, LONG_MIN}) check(format, value);
    }
    for (const char* format : {"<%lld>", "<%llu>", "<%llx>", "<%016llX>", "<%llli>"}) {
        for (const long long value : {0LL, -1LL, LLONG_MAX, LLONG_MIN}) check(format, value);
    }
}

TEST_F(Format, Texts) {
    for (const char* format : {"<%s>", "%s", "<%10s>", "<%-10s>", "<%.2s>", "<%08s>", "%s%%", "%%%s\n\r|"}) {
        for (const char* text : {"x", "text", "a %d b", "ä"}) check(format, text);
    }
    check("<%s>", "");
    check("%s|%s|%s", "a", "", "c");
    const char* volatile unseen = nullptr;  // the compiler would refuse a null that it sees
    const char* const missing = unseen;
    check("<%s>", missing);
    check("<%d|%s|%d>", 1, missing, 2);
    check("<%ls>", L"wide");
}

// In the "C" locale no letter beyond ASCII can be written.
TEST_F(Format, WhatCameAheadOfAConversionThatFailsIsReported) {
    check("%s %d|%ls", "path", 7, L"\u00E9");
    check("%s %lc", "path", static_cast<wint_t>(0xE9));
    ErrLogSetMode(-1, nullptr);
    ErrOut("%ls", L"\u00E9");
    EXPECT_EQ(kvtest::get(0).text, "%ls");
}

TEST_F(Format, MixesOfBoth) {
    check("%s(%d) : %s  %d [0x%08X] %s  ", "a.cpp", 7, "bad", -5, 0xE8023011u, "text");
    check("%d %f %d %s", 1, 2.5, 3, "four");
    check("%p %d", static_cast<void*>(this), 5);
    check("%2$s %1$s", "a", "b");
    check("%*d|%-*d", 5, 1, 5, 2);
    check("%c%c%c", 'a', 'b', 'c');
    check("100%% of %d", 3);
    errno = 2;
    check("%m %d", 5);
}

TEST_F(Format, TextThatDoesNotFitIsCutWhereItAlwaysWas) {
    for (const std::size_t length : {4090u, 4093u, 4094u, 4095u, 4096u, 5000u}) {
        const std::string text(length, 'x');
        check("%s", text.c_str());
        check("%s%d", text.c_str(), 123456);
        check("%d%s%c", 12, text.c_str(), 'z');
        check("%s%099d", text.c_str(), -3);
    }
}

TEST_F(Format, RandomFormats) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::vector<std::string> pieces{"%d", "%u", "%x", "%X", "%08X", "%03d", "%5u",
                                          "%c", "%%", "a",  " ",  "\n",   "%i"};
    for (int turn = 0; turn < 500; ++turn) {
        std::string format = "<";
        for (int i = 0; i < 6; ++i) format += pieces[random() % pieces.size()];
        format += ">";
        const auto argument = [&] { return static_cast<int>(random() % 94 + 33); };
        check(format.c_str(), argument(), argument(), argument(), argument(), argument(), argument());
    }
}
