// Libraries opened at run time. The folder to fall back to is moved to a test's own by the redirect.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "kvos/locator.h"
#include "kvos/process.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using kvtest::CapturedMessages;

std::string here() { return std::filesystem::current_path().string(); }

class LibraryFallback : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(folder_ / "Libraries");
        std::filesystem::copy_file(SMALL_LIBRARY, folder_ / "Libraries/small.so");
        newFolder_ = folder_.path();
        redirect("/Library/frameworks/KorvaneKit.framework", newFolder_);
    }
    void TearDown() override { gszReDir_Source = gszReDir_NewDir = nullptr; }

    void redirect(const std::string& from, const std::string& to) {
        from_ = from;
        to_ = to;
        gszReDir_Source = from_.data();
        gszReDir_NewDir = to_.data();
    }

    kvtest::ScratchFolder folder_;
    std::string newFolder_, from_, to_;
};

TEST(Libraries, OpensFindsAndCloses) {
    CapturedMessages messages;
    void* const library = kvOSLoadLibrary(SMALL_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr);
    const auto answer = reinterpret_cast<int (*)()>(kvOSGetProcAddress(library, "answerOfSmallLibrary"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(kvOSFreeLibrary(library), 0);
    EXPECT_EQ(messages.text(), "");
}

TEST(Libraries, MissingNameIsLoggedWithTheLoadersReason) {
    void* const library = kvOSLoadLibrary(SMALL_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr);
    CapturedMessages messages;
    errno = 0x2F;
    EXPECT_EQ(kvOSGetProcAddress(library, "noSuchName"), nullptr);
    const std::string text = messages.text();
    EXPECT_NE(text.find("kvOSGetProcAddress(FAILED=0x2F - '"), std::string::npos) << text;
    EXPECT_NE(text.find("noSuchName"), std::string::npos) << text;
    EXPECT_NE(text.find("') "), std::string::npos);
    kvOSFreeLibrary(library);
}

TEST(Libraries, NullIsRefused) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSGetProcAddress(nullptr, "malloc"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(messages.count("kvOSGetProcAddress(FAILED=0x16 - '') "), 1u) << messages.text();
    void* const program = kvOSLoadLibrary(nullptr, RTLD_NOW);
    ASSERT_NE(program, nullptr);  // the program itself
    EXPECT_EQ(kvOSGetProcAddress(program, nullptr), nullptr);
    EXPECT_EQ(messages.count("kvOSGetProcAddress(FAILED=0x16 - '') "), 2u);
    EXPECT_NE(kvOSGetProcAddress(program, "malloc"), nullptr);
    EXPECT_EQ(kvOSFreeLibrary(program), 0);
    errno = 0;
    EXPECT_EQ(kvOSFreeLibrary(nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(Libraries, MissingLibraryIsLoggedTwiceAndLeavesTheWorkingDirectory) {
    const std::string before = here();
    CapturedMessages messages;
    EXPECT_EQ(kvOSLoadLibrary("no_such_library.so", RTLD_NOW), nullptr);
    const int error = errno;
    EXPECT_EQ(error, ENOENT);
    EXPECT_EQ(here(), before);
    const std::string text = messages.text();
    const std::size_t first = text.find("kvOSLoadLibrary(no_such_library.so: cannot open shared object file");
    const std::size_t second = text.find("kvOSLoadLibrary(FAILED=0x2) no_such_library.so");
    EXPECT_NE(first, std::string::npos) << text;
    EXPECT_NE(second, std::string::npos) << text;
    EXPECT_LT(first, second);
}

TEST(Libraries, NothingIsTakenFromTheWorkingDirectoryByABareName) {
    std::filesystem::copy_file(SMALL_LIBRARY, "small.so");
    EXPECT_EQ(kvOSLoadLibrary("small.so", RTLD_NOW), nullptr);  // there is no folder to fall back to
}

TEST(Libraries, FlagsAreTheSystems) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSLoadLibrary(SMALL_LIBRARY, 0xFFFF0000), nullptr);
    EXPECT_EQ(messages.count("kvOSLoadLibrary("), 2u);
    EXPECT_EQ(kvOSLoadLibrary(nullptr, 0xFFFF0000), nullptr);
    EXPECT_EQ(messages.count("kvOSLoadLibrary("), 4u);
}

TEST_F(LibraryFallback, BareNameIsFoundInTheFolder) {
    const std::string before = here();
    CapturedMessages messages;
    void* const library = kvOSLoadLibrary("small.so", RTLD_NOW);
    ASSERT_NE(library, nullptr) << messages.text();
    EXPECT_NE(kvOSGetProcAddress(library, "answerOfSmallLibrary"), nullptr);
    EXPECT_EQ(here(), before);
    EXPECT_EQ(messages.text(), "");
    kvOSFreeLibrary(library);
}

TEST_F(LibraryFallback, RelativePathBeginsInTheFolder) {
    std::filesystem::create_directories(folder_ / "Libraries/codecs");
    std::filesystem::copy_file(SMALL_LIBRARY, folder_ / "Libraries/codecs/other.so");
    void* const library = kvOSLoadLibrary("codecs/other.so", RTLD_NOW);
    EXPECT_NE(library, nullptr);
    kvOSFreeLibrary(library);
}

TEST_F(LibraryFallback, PathOfALibraryIsNotCutToItsName) {
    EXPECT_EQ(kvOSLoadLibrary("/elsewhere/small.so", RTLD_NOW), nullptr);
}

TEST_F(LibraryFallback, WayBackIsRedirectedAsWell) {
    const std::string before = here();
    std::filesystem::create_directories(folder_ / "moved");
    redirect(before, folder_ / "moved");
    EXPECT_EQ(kvOSLoadLibrary("no_such_library.so", RTLD_NOW), nullptr);
    EXPECT_EQ(std::filesystem::canonical(here()), std::filesystem::canonical(folder_ / "moved"));
}

TEST_F(LibraryFallback, LibraryThatIsFoundAtOnceChangesNoDirectory) {
    // The way back would lead elsewhere, so that any change is seen.
    const std::string before = here();
    std::filesystem::create_directories(folder_ / "moved");
    redirect(before, folder_ / "moved");
    for (const char* path : {SMALL_LIBRARY, "libm.so.6"}) {
        void* const library = kvOSLoadLibrary(path, RTLD_NOW);
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(here(), before);
        kvOSFreeLibrary(library);
    }
}

TEST_F(LibraryFallback, ReasonOfALibraryThatLiesElsewhereIsTheLoaders) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSLoadLibrary("no_such_library.so", RTLD_NOW), nullptr);
    EXPECT_EQ(messages.count("kvOSLoadLibrary(no_such_library.so: cannot open"), 1u) << messages.text();
}

TEST_F(LibraryFallback, ExceptionOfALibrarysStartIsLoggedAndEndsThere) {
    const std::string before = here();
    setenv("THROW_AT_START", "1", 1);
    CapturedMessages messages;
    EXPECT_EQ(kvOSLoadLibrary("small.so", RTLD_NOW), nullptr);
    EXPECT_EQ(messages.count("Exception loading library(small.so) "), 1u) << messages.text();
    EXPECT_EQ(messages.count("kvOSLoadLibrary("), 0u);
    EXPECT_EQ(here(), before);
}

TEST_F(LibraryFallback, WhatIsNoExceptionOfTheStandardLibraryIsLoggedToo) {
    setenv("THROW_AT_START", "number", 1);
    CapturedMessages messages;
    EXPECT_EQ(kvOSLoadLibrary("small.so", RTLD_NOW), nullptr);
    EXPECT_EQ(messages.count("Exception loading library(small.so) "), 1u) << messages.text();
}

TEST(LibraryFolder, IsWhereThisLibraryLies) {
    char folder[4096] = "old";
    CapturedMessages messages;
    EXPECT_EQ(kvOSGetDynaLibDir(folder), 0u);
    EXPECT_EQ(std::string_view(folder).back(), '/');
    EXPECT_EQ(std::filesystem::canonical(folder),
              std::filesystem::canonical(std::filesystem::path(KVUTIL_LIBRARY_PATH).parent_path()));
    EXPECT_EQ(messages.text(), "");
}

TEST(LibraryFolder, NullIsRefused) {
    errno = 0;
    EXPECT_EQ(kvOSGetDynaLibDir(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
}

}  // namespace
