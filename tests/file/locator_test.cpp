// Repair of locators as text, and their absolute form.
#include "kvos/locator.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <unistd.h>

#include "kvos/file.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

std::string fixed(std::string text) {
    EXPECT_EQ(kvOSFixSeparators(text.data()), 0u);
    return text.c_str();
}

std::string legal(std::string text) {
    EXPECT_EQ(kvOSLegalizePath(text.data()), 0u);
    return text.c_str();
}

std::string absolute(const char* text) {
    char out[4096] = "untouched";
    EXPECT_EQ(kvOSFullPath(out, text, sizeof out), out);
    return out;
}

/// What a hexadecimal digit is worth, 16 for none.
unsigned worth(char character) {
    const std::string_view digits = "0123456789abcdef";
    const std::size_t found = digits.find(static_cast<char>(character | 0x20));
    if (character >= '0' && character <= '9') return static_cast<unsigned>(character - '0');
    return found == std::string_view::npos || found < 10 ? 16 : static_cast<unsigned>(found);
}

/// The path that a "file://" text becomes, worked out on copies.
std::string pathOfFileUrl(const std::string& url) {
    const std::size_t p =
        url.find_first_not_of('/', 7) == std::string::npos ? url.size() : url.find_first_not_of('/', 7);
    const std::string tail = url.substr(p);
    const bool drive = tail.size() >= 2 && (tail[1] == ':' || tail.substr(1, 3) == "%3A" || tail.substr(1, 3) == "%3a");
    const std::string text = drive ? tail : url.substr(p - 2);
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            const unsigned first = i + 1 < text.size() ? worth(text[i + 1]) : 16;
            const unsigned second = i + 2 < text.size() ? worth(text[i + 2]) : 16;
            const unsigned high = first == 16 ? 0 : first;
            out += static_cast<char>(second == 16 ? high : high * 16 + second);
            i += 3;
            if (i >= text.size()) break;
        }
        out += text[i] == '\\' ? '/' : text[i];
    }
    return out.c_str();
}

}  // namespace

// ---- kvOSFixSeparators ----

TEST(FixSeparators, PathsAndUrlsGetForwardSlashes) {
    EXPECT_EQ(fixed("C:\\clips\\a b.mov"), "C:/clips/a b.mov");
    EXPECT_EQ(fixed("\\\\server\\share"), "//server/share");
    EXPECT_EQ(fixed("http:\\\\host\\a"), "http://host/a");
    EXPECT_EQ(fixed("HTTPS://host\\a%20b"), "HTTPS://host/a%20b");
    EXPECT_EQ(fixed("rtmp://host\\app\\stream"), "rtmp://host/app/stream");
    EXPECT_EQ(fixed("s3://bucket\\key"), "s3://bucket/key");
}

TEST(FixSeparators, AnEmptyTextIsLeftAlone) {
    EXPECT_EQ(fixed(""), "");
    EXPECT_EQ(kvOSFixSeparators(nullptr), 0u);
}

TEST(FixSeparators, AFileUrlWithADriveBecomesTheDrivePath) {
    EXPECT_EQ(fixed("file:///C:/x"), "C:/x");
    EXPECT_EQ(fixed("file://C:\\x\\y"), "C:/x/y");
    EXPECT_EQ(fixed("file:////C:/x"), "C:/x");
    EXPECT_EQ(fixed("file:///C%3A/x"), "C:/x");
    EXPECT_EQ(fixed("file:///C%3a/x"), "C:/x");
}

TEST(FixSeparators, AFileUrlWithoutADriveKeepsTwoSlashes) {
    EXPECT_EQ(fixed("file:///Users/x"), "//Users/x");
    EXPECT_EQ(fixed("file://host/x"), "//host/x");
    EXPECT_EQ(fixed("file://///x"), "//x");
    EXPECT_EQ(fixed("file://"), "//");
    EXPECT_EQ(fixed("file:///"), "//");
}

TEST(FixSeparators, TheFilePrefixCountsInLowerCaseOnly) {
    EXPECT_EQ(fixed("FILE://C:/x\\%20"), "FILE://C:/x/%20");
    EXPECT_EQ(fixed("File:///a%20b"), "File:///a%20b");
}

TEST(FixSeparators, EscapesAreDecodedInEitherCase) {
    EXPECT_EQ(fixed("file:///a%20b"), "//a b");
    EXPECT_EQ(fixed("file:///%c3%A4x"), "//\xC3%A4x");
    EXPECT_EQ(fixed("file:///a%2Fb"), "//a/b");
}

TEST(FixSeparators, OfTwoEscapesInARowOnlyTheFirstIsDecoded) {
    EXPECT_EQ(fixed("file:///a%20%20b"), "//a %20b");
    EXPECT_EQ(fixed("file:///a%20%20%20b"), "//a %20 b");
}

TEST(FixSeparators, AnEscapeOfOtherCharactersCountsWhatItCan) {
    EXPECT_EQ(fixed("file:///a%2xb"), "//a\002b");
    EXPECT_EQ(fixed("file:///a%x1b"), "//a\001b");
    EXPECT_EQ(fixed("file:///a%zzb"), "//a");
    EXPECT_EQ(fixed("file:///a%4"), "//a\004");
    EXPECT_EQ(fixed("file:///a%"), "//a");
}

TEST(FixSeparators, ABackslashBehindAnEscapeIsTurnedAndAnEscapedOneIsNot) {
    EXPECT_EQ(fixed("file:///a%20\\b"), "//a /b");
    EXPECT_EQ(fixed("file:///a%5Cb"), "//a\\b");
}

TEST(FixSeparators, RandomFileUrlsFollowTheModel) {
    const unsigned seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string_view letters = "ab%%%%//\\:C023459AFafxz .";
    for (int round = 0; round < 20000; ++round) {
        std::string url = "file://";
        const std::size_t length = random() % 40;
        for (std::size_t i = 0; i < length; ++i) url += letters[random() % letters.size()];
        ASSERT_EQ(fixed(url), pathOfFileUrl(url)) << url;
    }
}

TEST(FixSeparators, LongTextsAreTreatedLikeShortOnes) {
    for (std::size_t length = 0; length < 70; ++length) {
        std::string text(length, '\\');
        EXPECT_EQ(fixed(text), std::string(length, '/'));
        EXPECT_EQ(kvOSFixHTTPSeparators(text.data()), 0u);
        EXPECT_EQ(text, std::string(length, '/'));
        std::wstring wide(length, L'\\');
        EXPECT_EQ(kvOSFixSeparatorsW(wide.data()), 0u);
        EXPECT_EQ(wide, std::wstring(length, L'/'));
    }
}

TEST(FixSeparators, TheHttpAndTheWideFormHaveNoSpecialCases) {
    std::string text = "file:///C:\\x%20";
    EXPECT_EQ(kvOSFixHTTPSeparators(text.data()), 0u);
    EXPECT_EQ(text, "file:///C:/x%20");
    std::wstring wide = L"file:///C:\\\u00e4%20";
    EXPECT_EQ(kvOSFixSeparatorsW(wide.data()), 0u);
    EXPECT_EQ(wide, L"file:///C:/\u00e4%20");
    EXPECT_EQ(kvOSFixHTTPSeparators(nullptr), 0u);
    EXPECT_EQ(kvOSFixSeparatorsW(nullptr), 0u);
}

TEST(Locators, TheSeparatorIsASlash) { EXPECT_STREQ(kvOSGetSeparator(), "/"); }

// ---- kvOSLegalizePath ----

TEST(LegalizePath, AFirstDotOrBlankBecomesAnUnderscore) {
    EXPECT_EQ(legal(".a:b"), "_a-b");
    EXPECT_EQ(legal(" "), "_");
    EXPECT_EQ(legal("a. "), "a. ");
    EXPECT_EQ(legal(""), "");
    EXPECT_EQ(kvOSLegalizePath(nullptr), 0u);
}

TEST(LegalizePath, RefusedCharactersAreReplaced) {
    EXPECT_EQ(legal("a\"b*c?d:e|f<g>h"), "a'b c d-e-f(g)h");
    EXPECT_EQ(legal("x\ty\nz\x7F"), "x y z\x7F");
}

TEST(LegalizePath, SlashesAndBackslashesStayButThatOfAUnicodeEscape) {
    EXPECT_EQ(legal("a/b\\c\\\\d"), "a/b\\c\\\\d");
    EXPECT_EQ(legal("\\u00e4\\u1\\U0\\u"), "Uu00e4\\u1\\U0\\u");
}

TEST(LegalizePath, NonAsciiLettersBecomeOneBlankAByte) { EXPECT_EQ(legal("f\xC3\xBCr \xE2\x82\xAC"), "f  r    "); }

TEST(LegalizePath, RandomBytesFollowTheTable) {
    const unsigned seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (std::size_t left = random() % 60; left > 0; --left) {
            text += random() % 4 == 0 ? "\\u0.:"[random() % 5] : static_cast<char>(1 + random() % 255);
        }
        std::string expected = text;
        if (!expected.empty() && (expected[0] == '.' || expected[0] == ' ')) expected[0] = '_';
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const char given = expected[i];
            const std::string_view from = "\"*?:|<>";
            const std::string_view to = "'  --()";
            if (static_cast<signed char>(given) < 32) {
                expected[i] = ' ';
            } else if (from.find(given) != std::string_view::npos) {
                expected[i] = to[from.find(given)];
            } else if (given == '\\' && text.compare(i + 1, 2, "u0") == 0) {
                expected[i] = 'U';
            }
        }
        ASSERT_EQ(legal(text), expected);
    }
}

// ---- kvOSFullPath ----

TEST(FullPath, RefusesNullAndASizeOfZero) {
    char out[4096] = "kept";
    EXPECT_EQ(kvOSFullPath(nullptr, "a", 4096), nullptr);
    EXPECT_EQ(kvOSFullPath(out, nullptr, 4096), nullptr);
    errno = 0;
    EXPECT_EQ(kvOSFullPath(out, "a", 0), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_STREQ(out, "kept");
}

TEST(FullPath, OnlyASizeOfZeroIsLookedAt) {
    char out[4096];
    EXPECT_EQ(kvOSFullPath(out, "/long/path", 1), out);
    EXPECT_STREQ(out, "/long/path");
}

TEST(FullPath, CopiesWhatNeedsNoFolder) {
    EXPECT_EQ(absolute(""), "");
    EXPECT_EQ(absolute("/a/../b"), "/a/../b");
    EXPECT_EQ(absolute("HTTP:x"), "HTTP:x");
    EXPECT_EQ(absolute("udp:x"), "udp:x");
}

TEST(FullPath, DropsSevenCharactersOfAFileUrlUnseen) {
    EXPECT_EQ(absolute("file:///x"), "/x");
    EXPECT_EQ(absolute("FILE://host/x"), "host/x");
    EXPECT_EQ(absolute("file:ab/x"), "/x");
    EXPECT_EQ(absolute("file:x"), "");
    EXPECT_EQ(absolute("file:"), "");
}

TEST(FullPath, PutsTheWorkingFolderAhead) {
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    EXPECT_EQ(absolute("./a b/../c"), std::string(cwd) + "/./a b/../c");
    EXPECT_EQ(absolute("x:y"), std::string(cwd) + "/x:y");
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(absolute("a"), "/a");
}

TEST(FullPath, MayWriteOverItsOwnInput) {
    char text[4096] = "file:///x";
    EXPECT_EQ(kvOSFullPath(text, text, sizeof text), text);
    EXPECT_STREQ(text, "/x");
    ASSERT_EQ(chdir("/"), 0);
    std::strcpy(text, "name");
    EXPECT_EQ(kvOSFullPath(text, text, sizeof text), text);
    EXPECT_STREQ(text, "/name");
}

TEST(FullPath, RefusesWhatDoesNotFit) {
    char out[4096] = "untouched";
    for (const std::string& text : {"/" + std::string(4095, 'x'), std::string(4090, 'x')}) {
        errno = 0;
        EXPECT_EQ(kvOSFullPath(out, text.c_str(), sizeof out), nullptr);
        EXPECT_EQ(errno, ENAMETOOLONG);
        EXPECT_STREQ(out, "");
    }
    EXPECT_EQ(absolute(("/" + std::string(4094, 'x')).c_str()).size(), 4095u);
}

TEST(FullPath, FailsWithoutAWorkingFolder) {
    kvtest::ScratchFolder scratch;
    const std::string gone = scratch / "gone";
    std::filesystem::create_directory(gone);
    ASSERT_EQ(chdir(gone.c_str()), 0);
    std::filesystem::remove(gone);
    char out[4096] = "untouched";
    EXPECT_EQ(kvOSFullPath(out, "a", sizeof out), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_STREQ(out, "");
}

// ---- archives ----

TEST(Archives, NothingIsInAnArchive) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "a.zip", "x");
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileNameIsInArchive((scratch / "a.zip").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsInArchive(-1), 0u);
    EXPECT_EQ(kvOSFileIsInArchive(12345), 0u);
    EXPECT_EQ(messages.text(), "");
}

TEST(Archives, AMissingFileIsReportedByTheOpenAndStillGivesZero) {
    kvtest::ScratchFolder scratch;
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileNameIsInArchive((scratch / "missing").c_str()), 0u);
    EXPECT_EQ(messages.count("kvOSCreateFile(" + (scratch / "missing") + ",0x80000000,0x00000003,"), 1u);
}

TEST(Archives, ANullTextOpensNothing) {
    EXPECT_EQ(kvOSFileNameIsInArchive(nullptr), 0u);
    EXPECT_EQ(errno, 2);
}
