// Numbers and texts.
#include "config/open_store.h"
#include "support/turkish_locale.h"

namespace {

using namespace kvtest;

class Values : public ::testing::Test {
protected:
    Values() { makeFile(file_, configWith("<K Type=\"0\"><D Value=\"7\" Type=\"2\" /><S Type=\"1\">ABC</S></K>")); }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
};

TEST_F(Values, AllOnesReadBackAndStandInTheFileAsMinusOne) {
    OpenStore store(file_);
    EXPECT_EQ(setDword(store, "K", "All", 0xFFFFFFFF), 0u);
    EXPECT_EQ(dwordOf(store, "K", "All"), 0xFFFFFFFF);
    EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    EXPECT_NE(contentOf(file_).find("<All Value=\"-1\" Type=\"2\" />"), std::string::npos);
    OpenStore again(file_);
    EXPECT_EQ(dwordOf(again, "K", "All"), 0xFFFFFFFF);
}

TEST_F(Values, ANumberWithoutItsAttributeFailsAndGivesAllOnes) {
    makeFile(file_, configWith("<K Type=\"0\"><D Type=\"2\" /></K>"));
    OpenStore store(file_);
    std::uint32_t value = 5;
    EXPECT_EQ(kvCFGValueDword(store, "K", "D", &value, 0), kFailed);
    EXPECT_EQ(value, 0xFFFFFFFF);
}

TEST_F(Values, WhatIsNoNumberSucceedsAndLeavesTheVariable) {
    makeFile(file_, configWith("<K Type=\"0\"><D Value=\"many\" Type=\"2\" /><E Value=\"\" Type=\"2\" /></K>"));
    OpenStore store(file_);
    for (const char* name : {"D", "E"}) {
        std::uint32_t value = 5;
        EXPECT_EQ(kvCFGValueDword(store, "K", name, &value, 0), 0u);
        EXPECT_EQ(value, 5u);
    }
}

TEST_F(Values, AMissingNumberFailsAndLeavesTheVariable) {
    OpenStore store(file_);
    std::uint32_t value = 5;
    EXPECT_EQ(kvCFGValueDword(store, "K", "None", &value, 0), kFailed);
    EXPECT_EQ(kvCFGValueDword(store, "None", "D", &value, 0), kFailed);
    EXPECT_EQ(value, 5u);
}

TEST_F(Values, ANullPointerAsksWhetherANumberIsThere) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGValueDword(store, "K", "D", nullptr, 0), 0u);
    EXPECT_EQ(kvCFGValueDword(store, "K", "None", nullptr, 0), kFailed);
    EXPECT_EQ(kvCFGValueDword(store, "K", "D", nullptr, 1), kFailed);
}

TEST_F(Values, AReadOfAMissingValueChangesNothing) {
    OpenStore store(file_);
    std::uint32_t value = 5;
    kvCFGValueDword(store, "K", "None", &value, 0);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\None"), 0u);
}

TEST_F(Values, AnEqualNumberDoesNotModify) {
    OpenStore store(file_);
    EXPECT_EQ(setDword(store, "K", "D", 7), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
    EXPECT_EQ(setDword(store, "K", "D", 8), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(dwordOf(store, "K", "D"), 8u);
}

TEST_F(Values, ANumberWithoutItsAttributeIsGivenOne) {
    makeFile(file_, configWith("<K Type=\"0\"><D Type=\"2\" /></K>"));
    OpenStore store(file_);
    EXPECT_EQ(setDword(store, "K", "D", 0), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(dwordOf(store, "K", "D"), 0u);
}

TEST_F(Values, WritingAMissingNumberAddsItAndTellsWhatTheAddingSays) {
    OpenStore store(file_);
    EXPECT_EQ(setDword(store, "K\\New", "D", 1), 0u);
    EXPECT_EQ(dwordOf(store, "K\\New", "D"), 1u);
    EXPECT_EQ(setDword(store, "Top", "D", 1), kFailed);  // the top key alone
    EXPECT_EQ(kvCFGKeyExists(store, "Top"), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, "Top\\D"), 0u);
    EXPECT_EQ(setDword(store, "Top", "D", 1), 0u);
}

TEST_F(Values, AnExtremeNumberInTheFileDoesNoHarm) {
    makeFile(file_, configWith("<K Type=\"0\"><D Value=\"4294967295\" Type=\"2\" /><E Value=\"99999999999999999999\" "
                               "Type=\"2\" /></K>"));
    OpenStore store(file_);
    EXPECT_EQ(dwordOf(store, "K", "D"), 0xFFFFFFFF);
    std::uint32_t value = 0;
    EXPECT_EQ(kvCFGValueDword(store, "K", "E", &value, 0), 0u);
}

// ---- texts -------------------------------------------------------------------------------------------------------

TEST_F(Values, ATextIsReadWithItsLength) {
    OpenStore store(file_);
    char buffer[8] = "#######";
    std::uint32_t length = 99;
    EXPECT_EQ(kvCFGValueString(store, "K", "S", buffer, &length, 0), 0u);
    EXPECT_STREQ(buffer, "ABC");
    EXPECT_EQ(length, 3u);
    length = 99;
    EXPECT_EQ(kvCFGValueString(store, "K", "S", nullptr, &length, 0), 3u);
    EXPECT_EQ(length, 3u);
}

TEST_F(Values, AMissingTextFailsAndAnElementWithoutTextSucceedsWithNothing) {
    OpenStore store(file_);
    char buffer[8] = "#";
    std::uint32_t length = 99;
    EXPECT_EQ(kvCFGValueString(store, "K", "None", buffer, &length, 0), kFailed);
    EXPECT_EQ(kvCFGValueString(store, "None", "S", buffer, &length, 0), kFailed);
    EXPECT_EQ(kvCFGValueString(store, "K", "D", buffer, &length, 0), 0u);
    EXPECT_STREQ(buffer, "#");
    EXPECT_EQ(length, 99u);
}

TEST_F(Values, AChangeOfCaseAloneIsNotStored) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "S", "abc"), 0u);
    EXPECT_EQ(stringOf(store, "K", "S"), "ABC");
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Values, CaseIsThatOfAsciiInATurkishLocaleAsWell) {
    const TurkishLocale turkish;
    if (!turkish.isInForce()) GTEST_SKIP() << "the locale can't be made here";
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "S", "FILE"), 4u);
    EXPECT_EQ(setString(store, "K", "S", "file"), 0u);
    EXPECT_EQ(stringOf(store, "K", "S"), "FILE");
}

TEST_F(Values, AnotherTextIsStoredAndItsLengthToldTwice) {
    OpenStore store(file_);
    char text[] = "longer";
    std::uint32_t length = 0;
    EXPECT_EQ(kvCFGValueString(store, "K", "S", text, &length, 1), 6u);
    EXPECT_EQ(length, 6u);
    EXPECT_EQ(stringOf(store, "K", "S"), "longer");
    EXPECT_EQ(kvCFGIsModified(store), 1u);
}

TEST_F(Values, ATextCanBecomeEmpty) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "S", ""), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(stringOf(store, "K", "S"), "");
}

TEST_F(Values, ANewTextSucceedsWhereItsKeyWasThere) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "N", "x"), 0u);
    EXPECT_EQ(stringOf(store, "K", "N"), "x");
    EXPECT_EQ(kvCFGGetType(store, "K\\N"), KVCFG_STRING);
}

TEST_F(Values, ANewTextUnderAMissingKeyFailsAndIsThere) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K\\Sub\\Deep", "N", "x"), kFailed);
    EXPECT_EQ(stringOf(store, "K\\Sub\\Deep", "N"), "x");
}

TEST_F(Values, AnEmptyTextMakesNoValue) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "N", ""), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\N"), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Values, AnEmptyTextUnderAMissingKeyFailsAndMakesNothing) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K\\New", "N", ""), kFailed);
    EXPECT_EQ(setString(store, "Top", "N", ""), kFailed);
    EXPECT_EQ(kvCFGKeyExists(store, "K\\New"), 0u);
    EXPECT_EQ(kvCFGKeyExists(store, "Top"), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Values, AFirstChildThatIsNoTextStays) {
    makeFile(file_, configWith("<K Type=\"0\"><S Type=\"1\"><!--why--></S></K>"));
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "S", "text"), 4u);
    EXPECT_EQ(kvCFGIsModified(store), 1u);
    EXPECT_EQ(stringOf(store, "K", "S"), "");
}

TEST_F(Values, ATextGoesIntoAnElementWithoutChildren) {
    OpenStore store(file_);
    EXPECT_EQ(setString(store, "K", "D", "text"), 4u);
    EXPECT_EQ(stringOf(store, "K", "D"), "text");
}

TEST_F(Values, AWriteOfNullReadsTheLength) {
    OpenStore store(file_);
    std::uint32_t length = 0;
    EXPECT_EQ(kvCFGValueString(store, "K", "S", nullptr, &length, 1), 3u);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);
}

TEST_F(Values, EveryByteOfATextSurvivesTheFile) {
    std::string text = "x";
    for (int i = 1; i < 256; ++i) {
        if (i != ' ') text += static_cast<char>(i);
    }
    text += "&#x41;&#x<S>&#66;&amp;]]>-->";
    {
        OpenStore store(file_);
        setString(store, "K", "S", text);
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
    OpenStore again(file_);
    EXPECT_EQ(stringOf(again, "K", "S"), text);
    EXPECT_EQ(dwordOf(again, "K", "D"), 7u);
}

TEST_F(Values, AHugeTextSurvivesTheFile) {
    const std::string text(5 << 20, 'x');
    {
        OpenStore store(file_);
        EXPECT_EQ(setString(store, "K", "S", text), text.size());
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
    OpenStore again(file_);
    EXPECT_EQ(stringOf(again, "K", "S"), text);
}

TEST_F(Values, NullNamesAndStoresFail) {
    OpenStore store(file_);
    std::uint32_t number = 1;
    char text[] = "x";
    for (const std::uint32_t write : {0u, 1u}) {
        EXPECT_EQ(kvCFGValueDword(store, nullptr, "D", &number, write), kFailed);
        EXPECT_EQ(kvCFGValueDword(store, "K", nullptr, &number, write), kFailed);
        EXPECT_EQ(kvCFGValueDword(nullptr, "K", "D", &number, write), kFailed);
        EXPECT_EQ(kvCFGValueString(store, nullptr, "S", text, &number, write), kFailed);
        EXPECT_EQ(kvCFGValueString(store, "K", nullptr, text, &number, write), kFailed);
        EXPECT_EQ(kvCFGValueString(nullptr, "K", "S", text, &number, write), kFailed);
    }
}

}  // namespace
