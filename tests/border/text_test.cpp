// Text in buffers of a fixed size: the bounds, byte by byte.
#include "border/text.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "support/turkish_locale.h"

namespace {

using namespace kv::border;

/// A buffer whose bytes behind the stated size must stay as they are.
struct Buffer {
    static constexpr std::size_t kSize = 8;
    char bytes[16];

    explicit Buffer(std::string_view text) {
        std::memset(bytes, '#', sizeof bytes);
        std::memcpy(bytes, text.data(), text.size());
        bytes[text.size()] = '\0';
    }
    Buffer() { std::memset(bytes, '#', sizeof bytes); }

    std::string text() const { return bytes; }
    bool isWholeBehind() const { return std::string_view(bytes + kSize, sizeof bytes - kSize) == "########"; }
};

TEST(CopyText, TakesWhatFitsWithItsTerminator) {
    Buffer buffer;
    EXPECT_TRUE(copyText(buffer.bytes, Buffer::kSize, "1234567"));
    EXPECT_EQ(buffer.text(), "1234567");
    EXPECT_TRUE(buffer.isWholeBehind());
    EXPECT_TRUE(copyText(buffer.bytes, Buffer::kSize, ""));
    EXPECT_EQ(buffer.text(), "");
    EXPECT_TRUE(copyText(buffer.bytes, Buffer::kSize, {}));
}

TEST(CopyText, LeavesAnEmptyTextWhereItDoesNotFit) {
    for (const std::string_view text : {"12345678", "123456789", "1234567890123456789012345"}) {
        Buffer buffer("before");
        EXPECT_FALSE(copyText(buffer.bytes, Buffer::kSize, text));
        EXPECT_EQ(buffer.text(), "");
        EXPECT_TRUE(buffer.isWholeBehind());
    }
}

TEST(CopyText, WritesNothingIntoNoRoom) {
    Buffer buffer("before");
    EXPECT_FALSE(copyText(buffer.bytes, 0, ""));
    EXPECT_EQ(buffer.text(), "before");
    EXPECT_TRUE(copyText(buffer.bytes, 1, ""));
    EXPECT_EQ(buffer.text(), "");
}

TEST(CopyText, MayTakeAPartOfTheBufferItself) {
    Buffer buffer("ab/cdef");
    EXPECT_TRUE(copyText(buffer.bytes, Buffer::kSize, std::string_view(buffer.bytes + 3, 4)));
    EXPECT_EQ(buffer.text(), "cdef");
}

TEST(AppendText, TakesWhatFitsBehindTheText) {
    Buffer buffer("123");
    EXPECT_TRUE(appendText(buffer.bytes, Buffer::kSize, "4567"));
    EXPECT_EQ(buffer.text(), "1234567");
    EXPECT_TRUE(appendText(buffer.bytes, Buffer::kSize, ""));
    EXPECT_EQ(buffer.text(), "1234567");
    EXPECT_TRUE(buffer.isWholeBehind());
}

TEST(AppendText, LeavesTheTextAsItWasWhereItDoesNotFit) {
    for (const std::string_view text : {"45678", "456789012345678901234567890"}) {
        Buffer buffer("123");
        EXPECT_FALSE(appendText(buffer.bytes, Buffer::kSize, text));
        EXPECT_EQ(buffer.text(), "123");
        EXPECT_TRUE(buffer.isWholeBehind());
    }
}

TEST(AppendText, RefusesATextThatIsLongerThanTheBuffer) {
    Buffer buffer("123456789");
    EXPECT_FALSE(appendText(buffer.bytes, Buffer::kSize, ""));
    EXPECT_FALSE(appendText(buffer.bytes, Buffer::kSize, "x"));
    EXPECT_EQ(buffer.text(), "123456789");
}

TEST(BeginsWithAnyCase, ComparesThePrefixAlone) {
    EXPECT_TRUE(beginsWithAnyCase("MEM://x", "mem://"));
    EXPECT_TRUE(beginsWithAnyCase("mem://", "mem://"));
    EXPECT_TRUE(beginsWithAnyCase("anything", ""));
    EXPECT_FALSE(beginsWithAnyCase("mem:/", "mem://"));
    EXPECT_FALSE(beginsWithAnyCase("", "m"));
    EXPECT_FALSE(beginsWithAnyCase("xmem://", "mem://"));
}

TEST(EqualAnyCase, ComparesWholeTexts) {
    EXPECT_TRUE(equalAnyCase("", ""));
    EXPECT_TRUE(equalAnyCase("File[", "fILE["));
    EXPECT_FALSE(equalAnyCase("file", "file:"));
    EXPECT_FALSE(equalAnyCase("file:", "file"));
    EXPECT_FALSE(equalAnyCase("[", "{"));  // as far from each other as "A" from "a"
    EXPECT_FALSE(equalAnyCase("\xC4", "\xE4"));
}

TEST(FindAnyCase, TellsWhereAPartFirstStands) {
    EXPECT_EQ(findAnyCase("a LOCATION: location:", "Location:"), 2u);
    EXPECT_EQ(findAnyCase("text", "T"), 0u);
    EXPECT_EQ(findAnyCase("text", "xT"), 2u);
    EXPECT_EQ(findAnyCase("text", ""), 0u);
    EXPECT_EQ(findAnyCase("tex", "text"), std::string_view::npos);
    EXPECT_EQ(findAnyCase("", "t"), std::string_view::npos);
}

TEST(AnyCase, IsThatOfAsciiInATurkishLocaleAsWell) {
    const kvtest::TurkishLocale turkish;
    if (!turkish.isInForce()) GTEST_SKIP() << "the locale can't be made here";
    EXPECT_TRUE(beginsWithAnyCase("SIP:x", "sip:"));
    EXPECT_TRUE(equalAnyCase("FILE", "file"));
    EXPECT_EQ(findAnyCase("A LOCATION:", "Location:"), 2u);
}

TEST(OrEmpty, TakesNullForAnEmptyText) {
    EXPECT_EQ(orEmpty(nullptr), "");
    EXPECT_EQ(orEmpty("text"), "text");
}

TEST(FormatText, CutsAndTerminates) {
    Buffer buffer;
    const char* volatile tail = "3456789";  // the compiler would warn of a cut that it can see
    formatText(buffer.bytes, Buffer::kSize, "%d-%s", 12, static_cast<const char*>(tail));
    EXPECT_EQ(buffer.text(), "12-3456");
    EXPECT_TRUE(buffer.isWholeBehind());
}

}  // namespace
