// The search for this library's folder where the loader does not tell it: in this program it never does.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "kvos/attributes.h"
#include "kvos/process.h"
#include "platform/library.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

bool kv::platform::ownLibraryFolder(char* target, std::size_t) noexcept {
    target[0] = '\0';
    return false;
}

namespace {

constexpr const char* kInApplication = "clipProof.app/Contents/Frameworks/KorvaneKit.framework/Versions/6/";
constexpr const char* kBeside = "../Frameworks/KorvaneKit.framework/Versions/6/";
constexpr const char* kOfUser = "~/Library/Frameworks/KorvaneKit.framework/Versions/6/";
constexpr const char* kOfMachine = "/Library/Frameworks/KorvaneKit.framework/Versions/6/";

void install(const std::string& folder) {
    std::filesystem::create_directories(folder);
    kvtest::makeFile(folder + "libmediafile.dylib");
}

void expectFound(const char* expected) {
    kvtest::CapturedMessages messages;
    std::string folder(4096, '#');
    EXPECT_EQ(kvOSGetDynaLibDir(folder.data()), 0u);
    EXPECT_STREQ(folder.c_str(), expected);
    EXPECT_EQ(messages.count("Found " + std::string(expected) + "libmediafile.dylib"), 1u) << messages.text();
    EXPECT_EQ(messages.count("Found "), 1u);
}

TEST(LibrarySearch, LastFolderIsTakenAndReportedWithoutALook) { expectFound(kOfMachine); }

TEST(LibrarySearch, FirstFolderThatHasTheNeighbourIsTaken) {
    install(kOfUser);  // a folder that is called "~"
    expectFound(kOfUser);
    install(kBeside);
    expectFound(kBeside);
    install(kInApplication);
    expectFound(kInApplication);
}

TEST(LibrarySearch, UsersOwnFolderIsNotMeant) {
    install(std::string(std::getenv("HOME")) + "/Library/Frameworks/KorvaneKit.framework/Versions/6/");
    expectFound(kOfMachine);
}

TEST(LibrarySearch, FolderWithoutTheNeighbourDoesNotCount) {
    std::filesystem::create_directories(kInApplication);
    kvtest::makeFile(std::string(kInApplication) + "libkvutil.dylib");
    expectFound(kOfMachine);
}

TEST(LibrarySearch, NamesThatCountAsThereDo) {
    const std::string name = std::string(kBeside) + "libmediafile.dylib";
    gvecNames.push_back(name.c_str());
    expectFound(kBeside);
    gvecNames.clear();
}

}  // namespace
