// The files as an independent reader and writer of XML has them.
#include <tinyxml.h>

#include "config/open_store.h"

namespace {

using namespace kvtest;

std::string printedByTheXmlLibrary(const std::string& path) {
    TiXmlDocument document;
    EXPECT_TRUE(document.LoadFile(path.c_str()));
    EXPECT_TRUE(document.SaveFile((path + ".copy").c_str()));
    return contentOf(path + ".copy");
}

/// Saves a store whose file had these bytes.
std::string savedFrom(const std::string& content) {
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    makeFile(file, content);
    OpenStore store(file);
    setDword(store, "K", "D", 1);
    setDword(store, "K", "D", 1);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    return contentOf(file);
}

TEST(WriteXml, AFreshDefaultFileIsWhatTheXmlLibraryWouldPrint) {
    const ScratchFolder scratch;
    const std::string file = scratch / "config.xml";
    { OpenStore store(file); }
    EXPECT_GT(contentOf(file).size(), 20000u);
    // An empty text is gone when it is read again; there is none in a tree that has children everywhere.
    EXPECT_EQ(contentOf(file), printedByTheXmlLibrary(file));
}

TEST(WriteXml, WhatElseStandsInTheFileStays) {
    const std::string saved = savedFrom(
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\" standalone=\"yes\" ?><!--before--><?other thing?>"
        "<KorvaneConfig x=\"1\"><!--in--><!DOCTYPE y><K Type='0' a='\"'><![CDATA[raw <>]]></K></KorvaneConfig>"
        "<Second><Root/></Second><!--behind-->");
    for (const char* part :
         {"standalone=\"yes\"", "<!--before-->", "<?other thing?>", "<KorvaneConfig x=\"1\">", "<!--in-->",
          "<!DOCTYPE y>", "<K Type=\"0\" a='&quot;'>", "<![CDATA[raw <>]]>", "<Second>", "<Root />", "<!--behind-->"}) {
        EXPECT_NE(saved.find(part), std::string::npos) << part << " in\n" << saved;
    }
}

TEST(WriteXml, ValuesOfADeclarationThatCouldNotBeReadBackAreLeftOut) {
    const std::string saved =
        savedFrom("<?xml version='a\"b' encoding=a&b standalone=a=b ?><KorvaneConfig><K Type=\"0\" /></KorvaneConfig>");
    EXPECT_TRUE(saved.starts_with("<?xml ?>\n<KorvaneConfig>")) << saved;
}

TEST(WriteXml, WhatLooksLikeAReferenceStaysAText) {
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    makeFile(file, configWith("<K Type=\"0\" />"));
    {
        OpenStore store(file);
        setString(store, "K", "S", "&#x</S><Evil Type=\"1\">");
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
    OpenStore again(file);
    EXPECT_EQ(stringOf(again, "K", "S"), "&#x</S><Evil Type=\"1\">");
    EXPECT_EQ(namesIn(again, "K"), std::vector<std::string>{"S"});
}

TEST(WriteXml, LineEndsOfEverySystemAreRead) {
    for (const char* lineEnd : {"\n", "\r\n", "\r"}) {
        const ScratchFolder scratch;
        const std::string file = scratch / "a.xml";
        makeFile(file, "<KorvaneConfig>" + std::string(lineEnd) + "<K Type=\"0\"><S Type=\"1\">a" + lineEnd +
                           "b</S></K>" + lineEnd + "</KorvaneConfig>");
        OpenStore store(file);
        EXPECT_EQ(stringOf(store, "K", "S"), "a b");
    }
}

TEST(WriteXml, AByteOrderMarkAndUtf8PassAsBytes) {
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    makeFile(file,
             "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?><KorvaneConfig><K Type=\"0\"><S Type=\"1\">"
             "\xC3\xA4\xE0</S></K></KorvaneConfig>");
    OpenStore store(file);
    EXPECT_EQ(stringOf(store, "K", "S"), "\xC3\xA4\xE0");
}

}  // namespace
