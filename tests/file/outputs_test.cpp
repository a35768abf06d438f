// Attached outputs: what reaches them, in which order, and how often.
#include <gtest/gtest.h>
#include <string>

#include "file/owned_file.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

class Outputs : public ::testing::Test {
protected:
    OwnedFile mainFile() { return openNew(folder_ / "main"); }
    std::uint32_t attach(const OwnedFile& file, const std::string& name) {
        return kvOSAddOutputFile(file.handle(), (folder_ / name).c_str());
    }
    std::string content(const std::string& name) { return contentOf(folder_ / name); }

    ScratchFolder folder_;
};

}  // namespace

TEST_F(Outputs, GetWhatIsWritten) {
    OwnedFile file = mainFile();
    EXPECT_EQ(attach(file, "one"), 1u);
    EXPECT_EQ(attach(file, "two"), 1u);
    writeAll(file, "abc");
    file.close();
    EXPECT_EQ(content("main"), "abc");
    EXPECT_EQ(content("one"), "abc");
    EXPECT_EQ(content("two"), "abc");
}

TEST_F(Outputs, FourthIsRefused) {
    const OwnedFile file = mainFile();
    EXPECT_EQ(attach(file, "one"), 1u);
    EXPECT_EQ(attach(file, "two"), 1u);
    EXPECT_EQ(attach(file, "three"), 1u);
    EXPECT_EQ(attach(file, "four"), 0u);
    EXPECT_EQ(file.record().dwOutputCount, 3u);
}

TEST_F(Outputs, OneThatCanNotBeOpenedAnswersOneAndDoesNotCount) {
    CapturedMessages messages;
    const OwnedFile file = mainFile();
    EXPECT_EQ(attach(file, "no/such/folder/file"), 1u);
    EXPECT_EQ(file.record().dwOutputCount, 0u);
    EXPECT_EQ(kvOSAddOutputFile(file.handle(), nullptr), 1u);
    EXPECT_EQ(file.record().dwOutputCount, 0u);
    writeAll(file, "abc");
}

TEST_F(Outputs, NeedWriteAccess) {
    makeFile(folder_ / "main", "x");
    const OwnedFile file = openForReading(folder_ / "main");
    EXPECT_EQ(attach(file, "one"), 0u);
}

TEST_F(Outputs, ExistingOneIsTruncated) {
    makeFile(folder_ / "one", "old content");
    OwnedFile file = mainFile();
    attach(file, "one");
    writeAll(file, "new");
    file.close();
    EXPECT_EQ(content("one"), "new");
}

TEST_F(Outputs, InheritShareSecurityTemplateAndFlagsLessOneBit) {
    int security = 0;
    const OwnedFile file(
        kvOSCreateFile((folder_ / "main").c_str(), KVFILE_WRITE, 1, &security, KVFILE_CREATE_ALWAYS, 0x60000001, 42));
    attach(file, "one");
    const auto& output = *reinterpret_cast<const kvOSFileHandle*>(file.record().hOutput[0]);
    EXPECT_EQ(output.dwAccess, KVFILE_WRITE);
    EXPECT_EQ(output.dwShare, 1u);
    EXPECT_EQ(output.pSecurity, &security);
    EXPECT_EQ(output.dwCreation, 1u);
    EXPECT_EQ(output.dwFlags, 0x20000001u);
    EXPECT_EQ(output.hTemplate, 42);
}

TEST_F(Outputs, CanBeAMemoryFile) {
    OwnedFile file = mainFile();
    EXPECT_EQ(kvOSAddOutputFile(file.handle(), "mem://copy"), 1u);
    writeAll(file, "abc");
    const auto& output = *reinterpret_cast<const kvOSFileHandle*>(file.record().hOutput[0]);
    EXPECT_EQ(output.dwType, KVFILE_MEMORY);
    EXPECT_EQ(output.qwSize, 3u);
}

TEST_F(Outputs, FollowEverySeekAndCut) {
    OwnedFile file = mainFile();
    attach(file, "one");
    writeAll(file, "0123456789");
    kvOSSeek(file.handle(), 2);
    writeAll(file, "a");
    kvOSSeekEnd(file.handle());
    writeAll(file, "b");
    kvOSSetFilePointer(file.handle(), 5, nullptr, 0);
    writeAll(file, "c");
    kvOSSetFilePointerEx(file.handle(), -1, nullptr, 2);
    writeAll(file, "d");
    kvOSSeek(file.handle(), 9);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 1u);
    file.close();
    EXPECT_EQ(content("main"), "01a34c678");
    EXPECT_EQ(content("one"), content("main"));
}

TEST_F(Outputs, LoneNegativeLowWordReachesThemUnsigned) {
    OwnedFile file = mainFile();
    attach(file, "one");
    writeAll(file, "0123456789");
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -3, nullptr, 1), 7u);
    EXPECT_EQ(kvOSTell(file.record().hOutput[0]), 10 + 0xFFFFFFFDll);
}

TEST_F(Outputs, CallersHighWordIsNotTouchedByThem) {
    OwnedFile file = mainFile();
    attach(file, "one");
    std::int32_t high = 1;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 5, &high, 0), 5u);
    EXPECT_EQ(high, 1);
    EXPECT_EQ(kvOSTell(file.record().hOutput[0]), 0x100000005ll);
    kvOSSeek(file.handle(), 0);
}

TEST_F(Outputs, ReadingAndSizesStayWithTheMainFile) {
    OwnedFile file = mainFile();
    attach(file, "one");
    writeAll(file, "abc");
    kvOSSeek(file.handle(), 0);
    EXPECT_EQ(readSome(file, 2), "ab");
    EXPECT_EQ(kvOSTell(file.record().hOutput[0]), 0);
}

TEST_F(Outputs, GetTextOfTheStdioCallsTwice) {
    OwnedFile file = mainFile();
    attach(file, "one");
    EXPECT_EQ(kvOSfputs("ab", file.handle()), 1u);
    EXPECT_EQ(kvOSfputc('c', file.handle()), 1u);
    EXPECT_EQ(kvOSfprintf(file.handle(), "%d", 7), 1u);
    file.close();
    EXPECT_EQ(content("main"), "abc7");
    EXPECT_EQ(content("one"), "ababcc77");
}
