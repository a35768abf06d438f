// References by number: read as the letters that they stand for, or not read at all.
#include <cerrno>

#include "config/open_store.h"

namespace {

using namespace kvtest;

constexpr const char* kUtf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr const char* kLatin1 = "<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n";

std::string fileWith(const std::string& declaration, const std::string& text) {
    return declaration + "<KorvaneConfig><K Type=\"0\"><S Type=\"1\">" + text + "</S></K></KorvaneConfig>";
}

class References : public ::testing::Test {
protected:
    std::optional<std::string> read(const std::string& declaration, const std::string& text) const {
        makeFile(file_, fileWith(declaration, text));
        OpenStore store(file_);
        return store.isOpen() ? stringOf(store, "K", "S") : std::nullopt;
    }

    /// The text in the file after a save.
    std::string saved(const std::string& declaration, const std::string& text) const {
        makeFile(file_, fileWith(declaration, text));
        OpenStore store(file_);
        setDword(store, "K", "D", 1);
        EXPECT_EQ(store.close(1), 0u);
        const std::string content = contentOf(file_);
        const std::size_t start = content.find("<S Type=\"1\">") + 12;
        return content.substr(start, content.find("</S>") - start);
    }

    void expectLeft(const std::string& declaration, const std::string& text) const {
        SCOPED_TRACE(declaration + text);
        makeFile(scratch_ / "a.000.xml", configWith("<Older />"));
        errno = 0;
        EXPECT_EQ(read(declaration, text), std::nullopt);
        EXPECT_EQ(errno, EILSEQ);
        EXPECT_EQ(contentOf(file_), fileWith(declaration, text));
        EXPECT_TRUE(std::filesystem::exists(scratch_ / "a.000.xml"));
        EXPECT_FALSE(std::filesystem::exists(file_ + ".bad"));
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(References, InAFileInUtf8TheyAreTheBytesOfTheirLetters) {
    for (const char* declaration : {kUtf8, "<?xml version='1.0' encoding='utf8'?>", "<?xml version=\"1.0\" ?>", "",
                                    "\xEF\xBB\xBF", "\n<?XML Encoding = \"Utf-8\" ?>"}) {
        SCOPED_TRACE(declaration);
        EXPECT_EQ(read(declaration, "a&#233;b&#xE9;&#x20ac;&#x20AC;&#128512;z"),
                  "a\xC3\xA9"
                  "b\xC3\xA9\xE2\x82\xAC\xE2\x82\xAC\xF0\x9F\x98\x80z");
        EXPECT_EQ(saved(declaration, "&#233;\xC3\xA9&#x20AC;"), "\xC3\xA9\xC3\xA9\xE2\x82\xAC");
    }
}

TEST_F(References, TheFirstAndTheLastLetterOfEachLengthAreRight) {
    EXPECT_EQ(read(kUtf8, "&#127;&#128;&#x7FF;&#x800;&#xFFFF;&#x10000;&#x10FFFF;"),
              "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST_F(References, InLatin1TheyAreOneByte) {
    for (const char* declaration : {kLatin1, "<?xml version=\"1.0\" encoding='ISO-8859-1'?>",
                                    "<?xml version=\"1.0\" encoding=\"windows-1252\"?>"}) {
        EXPECT_EQ(read(declaration, "&#233;&#xFF;&#65;"),
                  "\xE9\xFF"
                  "A");
        EXPECT_EQ(saved(declaration, "&#233;\xE9"), "\xE9\xE9");
    }
}

TEST_F(References, ALetterThatTheFileHasNoBytesForKeepsItFromBeingOpened) {
    for (const char* euro : {"&#8364;", "&#x20AC;", "&#x20ac;", "&#256;", "a&#233;&#99999999999999999999;"}) {
        expectLeft(kLatin1, euro);
    }
    expectLeft("<?xml version=\"1.0\" encoding=\"koi8-r\"?>", "&#233;");
    for (const char* none : {"&#xD800;", "&#xDFFF;", "&#x110000;", "&#x1000000E9;"}) expectLeft(kUtf8, none);
}

TEST_F(References, InAValueOfAnAttributeTheyCountAsWell) {
    makeFile(file_, kLatin1 + std::string("<KorvaneConfig><K Type=\"0\" x=\"&#8364;\" /></KorvaneConfig>"));
    EXPECT_FALSE(OpenStore(file_).isOpen());
}

TEST_F(References, InCommentsAndCdataThereAreNone) {
    EXPECT_EQ(read(kLatin1, "text<!-- > &#8364; -->"), "text");
    EXPECT_EQ(read(kLatin1, "<![CDATA[a>&#8364;]]>"), "a>&#8364;");
    EXPECT_EQ(read(kUtf8, "<![CDATA[&#233;]]>"), "&#233;");
    EXPECT_EQ(read(std::string(kLatin1) + "<?other &#8364; ?><!DOCTYPE x &#8364;>", "text"), "text");
}

TEST_F(References, ThoseOfAsciiAreNotTakenForMarkup) {
    EXPECT_EQ(read(kUtf8, "&#60;x&#x3E;&#38;amp;&#233;&amp;#233;"), "<x>&amp;\xC3\xA9&#233;");
    EXPECT_EQ(saved(kUtf8, "&#60;&#233;&#10;"), "&lt;\xC3\xA9&#x0A;");
}

}  // namespace
