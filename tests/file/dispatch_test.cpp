// Opening and closing: which opener a text reaches, what the arguments mean, and what a failure says.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "errlog.h"
#include "file/owned_file.h"
#include "kvos/locator.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

std::string failedOpen(const std::string& path, std::uint32_t access, std::uint32_t share, std::uint32_t creation,
                       std::uint32_t flags, int error) {
    char text[8192];
    std::snprintf(text, sizeof text, "kvOSCreateFile(%s,0x%08X,0x%08X,0x%08X,0x%08X)-FAIL=0x%08X(%d) ", path.c_str(),
                  access, share, creation, flags, static_cast<unsigned>(error), error);
    return text;
}

/// Sets the redirect for one test; each test is a process of its own.
void redirect(const char* source, const char* target) {
    gszReDir_Source = strdup(source);
    gszReDir_NewDir = strdup(target);
}

}  // namespace

TEST(Open, NullPathGivesZeroAndLastErrorTwo) {
    CapturedMessages messages;
    kvOSSetLastError(0);
    EXPECT_EQ(kvOSCreateFile(nullptr, KVFILE_READ, 3, nullptr, 3, 0, 0), 0);
    EXPECT_EQ(kvOSGetLastError(), 2u);
    EXPECT_EQ(messages.text(), "");
}

TEST(Open, EmptyPathFailsWithoutAMessage) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile("", KVFILE_READ, 3, nullptr, 3, 0, 0), -1);
    EXPECT_EQ(messages.text(), "");
}

TEST(Open, PathRedirectedToNothingFailsWithoutAMessage) {
    redirect("/gone", "");
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile("/GONE", KVFILE_READ | KVFILE_WRITE, 3, nullptr, 3, 0, 0), -1);
    EXPECT_EQ(messages.text(), "");
}

TEST(Open, WideEmptyAndNullPathsGiveMinusOne) {
    EXPECT_EQ(kvOSCreateFileW(L"", KVFILE_READ, 3, nullptr, 3, 0, 0), -1);
    EXPECT_EQ(kvOSCreateFileW(nullptr, KVFILE_READ, 3, nullptr, 3, 0, 0), -1);
}

TEST(Open, WidePathWithLongLettersOpensTheFileOfThatName) {
    const ScratchFolder folder;
    makeFile(folder / "\u4e2d\u6587\u4e2d\u6587\u4e2d\u6587", "wide");
    std::wstring path(folder.path().begin(), folder.path().end());
    path += L"/\u4e2d\u6587\u4e2d\u6587\u4e2d\u6587";
    const OwnedFile file(kvOSCreateFileW(path.c_str(), KVFILE_READ, 3, nullptr, 3, 0, 0));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(readAll(file), "wide");
}

TEST(Open, MissingFileIsReportedOnceInItsExactWords) {
    const ScratchFolder folder;
    const std::string path = folder / "missing";
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile(path.c_str(), KVFILE_READ, 3, nullptr, 3, 0x80, 0), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.text(), failedOpen(path, KVFILE_READ, 3, 3, 0x80, ENOENT));
}

TEST(Open, FailureNamesTheRedirectedPath) {
    redirect("/from", "/nowhere-at-all");
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile("/From/x", KVFILE_READ, 3, nullptr, 3, 0, 0), -1);
    EXPECT_EQ(messages.text(), failedOpen("/nowhere-at-all/x", KVFILE_READ, 3, 3, 0, ENOENT));
}

TEST(Open, RedirectedPathIsOpened) {
    const ScratchFolder folder;
    makeFile(folder / "clip", "there");
    redirect("/vol1", folder.path().c_str());
    const OwnedFile file = openForReading("/VOL1/clip");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(readAll(file), "there");
}

TEST(Open, PathTooLongForItsBufferIsRefusedAndNotCut) {
    const std::string path(5000, 'a');
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile(path.c_str(), KVFILE_WRITE, 1, nullptr, 2, 0, 0), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(messages.text(), failedOpen(path.substr(0, 252) + "...", KVFILE_WRITE, 1, 2, 0, ENAMETOOLONG));
}

TEST(Open, MemoryTextTooLongForTheRecordIsRefusedAlsoWhenARedirectShortensIt) {
    const std::string prefix = "mem://" + std::string(4500, 'a');
    redirect(prefix.c_str(), "/x");
    CapturedMessages messages;
    EXPECT_FALSE(openNew(prefix + "b").isOpen());
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(Open, WidePathThatWouldEndEarlyIsRefused) {
    const ScratchFolder folder;
    makeFile(folder / "victim", "kept");
    std::wstring path(folder.path().begin(), folder.path().end());
    path += L"/victim";
    path += static_cast<wchar_t>(0x10000);
    path += L"x";
    EXPECT_EQ(kvOSCreateFileW(path.c_str(), KVFILE_WRITE, 1, nullptr, 2, 0, 0), -1);
    EXPECT_EQ(errno, EILSEQ);
    EXPECT_EQ(contentOf(folder / "victim"), "kept");
}

TEST(Open, PathThatTheRedirectMakesTooLongIsRefused) {
    redirect("/v", std::string(200, 'b').c_str());
    const std::string path = "/v" + std::string(4000, 'a');
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile(path.c_str(), KVFILE_WRITE, 1, nullptr, 2, 0, 0), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
}

TEST(Open, MemoryTextIsKnownInAnyCase) {
    const OwnedFile file = openNew("MEM://Clip");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().dwType, KVFILE_MEMORY);
    EXPECT_STREQ(file.record().szPath, "MEM://Clip");
}

TEST(Open, RedirectFromAMemoryTextHasNoEffect) {
    redirect("mem://", "/nowhere/");
    const OwnedFile file = openNew("mem://clip");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.record().dwType, KVFILE_MEMORY);
}

TEST(Open, RedirectToAMemoryTextOpensALocalFileOfThatName) {
    redirect("/virtual", "mem://");
    CapturedMessages messages;
    EXPECT_FALSE(openForReading("/virtual/clip").isOpen());
    EXPECT_EQ(messages.text(), failedOpen("mem:///clip", KVFILE_READ, 3, 3, 0, ENOENT));
}

TEST(Open, SharedWritingIsWarnedOfAndSucceeds) {
    const ScratchFolder folder;
    CapturedMessages messages;
    const OwnedFile file = openFile(folder / "shared", KVFILE_WRITE, KVFILE_CREATE_ALWAYS, 3);
    EXPECT_TRUE(file.isOpen());
    int number = 0;
    int length = 0;
    const std::string text = messages.text();
    EXPECT_EQ(
        std::sscanf(text.c_str(), "Writing <%d> being open for write with write share enabled!%n", &number, &length),
        1);
    EXPECT_EQ(static_cast<std::size_t>(length), text.size()) << text;
}

TEST(Open, WritingWithoutWriteShareIsNotWarnedOf) {
    const ScratchFolder folder;
    CapturedMessages messages;
    EXPECT_TRUE(openFile(folder / "a", KVFILE_WRITE, KVFILE_CREATE_ALWAYS, 1).isOpen());
    EXPECT_TRUE(openFile(folder / "a", KVFILE_WRITE, KVFILE_CREATE_ALWAYS, 5).isOpen());
    EXPECT_EQ(messages.text(), "");
}

TEST(Open, ReadingWithWriteShareIsNotWarnedOf) {
    const ScratchFolder folder;
    makeFile(folder / "a");
    CapturedMessages messages;
    EXPECT_TRUE(openForReading(folder / "a").isOpen());
    EXPECT_EQ(messages.text(), "");
}

TEST(Open, EveryArgumentIsKeptInTheRecord) {
    int security = 0;
    const OwnedFile file(kvOSCreateFile("mem://", 0xC0000001, 5, &security, 4, 0x1234, 77));
    EXPECT_EQ(file.record().dwAccess, 0xC0000001u);
    EXPECT_EQ(file.record().dwShare, 5u);
    EXPECT_EQ(file.record().pSecurity, &security);
    EXPECT_EQ(file.record().dwCreation, 4u);
    EXPECT_EQ(file.record().dwFlags, 0x1234u);
    EXPECT_EQ(file.record().hTemplate, 77);
}

TEST(Open, LocalRecordHasNoPathAndNoBlock) {
    const ScratchFolder folder;
    const OwnedFile file = openNew(folder / "a");
    EXPECT_EQ(file.record().dwType, KVFILE_LOCAL);
    EXPECT_STREQ(file.record().szPath, "");
    EXPECT_EQ(file.record().dwBlockSize, 0u);
    EXPECT_EQ(file.record().fBufGrow, 0u);
}

TEST(Open, UrlIsRefusedUnderItsOwnMessage) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSCreateFile("http://127.0.0.1:9/clip", KVFILE_READ, 3, nullptr, 3, 0, 0), -1);
    EXPECT_EQ(messages.text(), "Error: opening <http://127.0.0.1:9/clip> ");
}

// What each pair of access and creation does to a file that exists (holding "old") and to one that does not.
struct LocalMode {
    const char* name;
    std::uint32_t access;
    std::uint32_t creation;
    bool keepsOld;        // an existing file keeps its bytes
    bool createsMissing;  // a missing file is created
};

void PrintTo(const LocalMode& mode, std::ostream* out) { *out << mode.name; }

class LocalModes : public ::testing::TestWithParam<LocalMode> {};

TEST_P(LocalModes, ExistingFile) {
    const ScratchFolder folder;
    makeFile(folder / "a", "old");
    OwnedFile file = openFile(folder / "a", GetParam().access, GetParam().creation);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(contentOf(folder / "a"), GetParam().keepsOld ? "old" : "");
}

TEST_P(LocalModes, MissingFile) {
    const ScratchFolder folder;
    CapturedMessages messages;
    const OwnedFile file = openFile(folder / "a", GetParam().access, GetParam().creation);
    struct stat found {};
    EXPECT_EQ(file.isOpen(), GetParam().createsMissing);
    EXPECT_EQ(stat((folder / "a").c_str(), &found) == 0, GetParam().createsMissing);
    EXPECT_EQ(messages.count("kvOSCreateFile("), GetParam().createsMissing ? 0u : 1u);
}

constexpr std::uint32_t kRead = KVFILE_READ;
constexpr std::uint32_t kWrite = KVFILE_WRITE;
constexpr std::uint32_t kBoth = KVFILE_READ | KVFILE_WRITE;

INSTANTIATE_TEST_SUITE_P(
    Table, LocalModes,
    ::testing::Values(
        LocalMode{"ReadNew", kRead, 1, true, false}, LocalMode{"ReadAlways", kRead, 2, true, false},
        LocalMode{"ReadExisting", kRead, 3, true, false}, LocalMode{"ReadTruncate", kRead, 5, true, false},
        LocalMode{"WriteNew", kWrite, 1, false, true}, LocalMode{"WriteAlways", kWrite, 2, false, true},
        LocalMode{"WriteExisting", kWrite, 3, true, true}, LocalMode{"WriteOpenAlways", kWrite, 4, true, true},
        LocalMode{"WriteTruncate", kWrite, 5, true, true}, LocalMode{"WriteZero", kWrite, 0, true, true},
        LocalMode{"BothNew", kBoth, 1, false, true}, LocalMode{"BothAlways", kBoth, 2, false, true},
        LocalMode{"BothExisting", kBoth, 3, true, false}, LocalMode{"BothOpenAlways", kBoth, 4, true, false},
        LocalMode{"BothTruncate", kBoth, 5, true, false}, LocalMode{"NeitherAlways", 0, 2, false, true},
        LocalMode{"NeitherExisting", 0, 3, true, false}, LocalMode{"OtherBitExisting", kRead | 1, 3, true, false}),
    [](const auto& row) { return row.param.name; });

TEST(Open, ReadingAFolderOpensAndItsReadFailsWithAMessage) {
    const ScratchFolder folder;
    const OwnedFile file = openForReading(folder.path());
    ASSERT_TRUE(file.isOpen());
    CapturedMessages messages;
    char byte = 0;
    std::uint32_t got = 9;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, &got, nullptr), 0u);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(messages.count("-FAIL=0x00000015(21)\n"), 1u) << messages.text();
}

TEST(Open, NamesWithBlanksBracketsForeignLettersAndFullLengthWork) {
    const ScratchFolder folder;
    for (const std::string& name :
         {std::string(" lead and trail "), std::string("[a]*?{b}"), std::string("\u00e5\u4e2d\U0001F600"),
          std::string("back\\slash"), std::string(255, 'n'), std::string("a:b|c")}) {
        SCOPED_TRACE(name);
        OwnedFile file = openNew(folder / name);
        ASSERT_TRUE(file.isOpen());
        writeAll(file, name);
        EXPECT_EQ(file.close(), 1u);
        EXPECT_EQ(contentOf(folder / name), name);
    }
    CapturedMessages messages;
    EXPECT_FALSE(openNew(folder / std::string(256, 'n')).isOpen());
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(Close, InvalidHandlesGiveZero) {
    EXPECT_EQ(kvOSCloseFile(0), 0u);
    EXPECT_EQ(kvOSCloseFile(-1), 0u);
}

TEST(Close, GivesOneForLocalAndMemoryFiles) {
    const ScratchFolder folder;
    EXPECT_EQ(openNew(folder / "a").close(), 1u);
    EXPECT_EQ(openNew("mem://").close(), 1u);
}

TEST(Close, FullDiskIsToldByTheClose) {
    OwnedFile file = openFile("/dev/full", KVFILE_WRITE, KVFILE_OPEN_EXISTING);
    ASSERT_TRUE(file.isOpen());
    writeAll(file, "lost");
    const auto printed = static_cast<int>(file.handle());
    CapturedMessages messages;
    EXPECT_EQ(file.close(), 0u);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(messages.text(), "kvOSCloseFile(" + std::to_string(printed) + ")-FAIL=0x0000001C(28) ");
}

TEST(Close, OutputsAreClosedFirstAndTheMainStreamsErrorIsTheOneTold) {
    const ScratchFolder folder;
    OwnedFile file = openFile("/dev/full", KVFILE_WRITE, KVFILE_OPEN_EXISTING);
    ASSERT_EQ(kvOSAddOutputFile(file.handle(), (folder / "copy").c_str()), 1u);
    writeAll(file, "both");
    CapturedMessages messages;
    EXPECT_EQ(file.close(), 0u);
    EXPECT_EQ(contentOf(folder / "copy"), "both");
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(messages.count("-FAIL=0x0000001C(28) "), 1u);
}
