// Directories by name, and the ones that applications rely on.
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/locator.h"
#include "support/scratch.h"
#include "tests/file/ordinary_user.h"

namespace fs = std::filesystem;

namespace {

const std::string kTooLong(5000, 'x');

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

using BufferCall = uint32_t (*)(char*);

std::string textOf(BufferCall call) {
    char buffer[4096] = "untouched";
    EXPECT_EQ(call(buffer), 0u);
    return buffer;
}

/// Moves the folder of the system-wide settings to another place while it lives.
class SystemFolderMoved {
public:
    explicit SystemFolderMoved(std::string to) : to_(std::move(to)) {
        gszReDir_Source = from_.data();
        gszReDir_NewDir = to_.data();
    }
    ~SystemFolderMoved() { gszReDir_Source = gszReDir_NewDir = nullptr; }

private:
    std::string from_ = "/Library/Application Support";
    std::string to_;
};

const std::string kSystemConfig = "/Library/Application Support/Korvane/";

std::string userConfig() { return std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane/"; }

bool gUserHasNoHome = false;
int gMaskChanges = 0;

void makeUserLibrary() { fs::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support"); }

}  // namespace

#ifdef __GLIBC__
// Stands in front of the system's own for this whole program, so that a test can be a user with an empty home.
extern "C" __attribute__((visibility("default"))) int getpwuid_r(uid_t user, passwd* entry, char* room,
                                                                 std::size_t size, passwd** found) {
    using Call = int (*)(uid_t, passwd*, char*, std::size_t, passwd**);
    static const auto next = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "getpwuid_r"));
    if (!gUserHasNoHome) return next(user, entry, room, size, found);
    static char empty[] = "";
    *entry = passwd{};
    entry->pw_dir = empty;
    *found = entry;
    return 0;
}

// Counts the changes of the mask.
extern "C" __attribute__((visibility("default"))) mode_t umask(mode_t mask) {
    static const auto next = reinterpret_cast<mode_t (*)(mode_t)>(dlsym(RTLD_NEXT, "umask"));
    ++gMaskChanges;
    return next(mask);
}
#endif

// ---- making and changing ----

TEST(MakeDir, MakesOneDirectoryWithTheModeAsAskedWhateverTheMask) {
    kvtest::ScratchFolder scratch;
    const mode_t before = umask(077);
    EXPECT_EQ(kvOSMakeDir((scratch / "asked").c_str(), 0731), 0);
    EXPECT_EQ(kvOSMakeDir((scratch / "usual").c_str(), 0), 0);
    EXPECT_EQ(kvOSMakeDir((scratch / "cut").c_str(), 0x10000 | 0700), 0);
    EXPECT_EQ(umask(before), 077u);
    EXPECT_EQ(modeOf(scratch / "asked"), 0731u);
    EXPECT_EQ(modeOf(scratch / "usual"), 0775u);
    EXPECT_EQ(modeOf(scratch / "cut"), 0700u);
}

TEST(MakeDir, FromSeveralThreadsAtOnceLeavesTheMask) {
    kvtest::ScratchFolder scratch;
    const mode_t before = umask(027);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([own = scratch / std::to_string(i)] {
            for (int round = 0; round < 500; ++round) {
                kvOSMakeDir(own.c_str(), 0);
                rmdir(own.c_str());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(umask(before), 027u);
}

#ifdef __GLIBC__
TEST(MakeDir, LeavesTheMaskAloneWhereTheParentIsMissing) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "file");
    gMaskChanges = 0;
    EXPECT_EQ(kvOSMakeDir((scratch / "missing/folder//").c_str(), 0), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kvOSMakeDir((scratch / "file/folder").c_str(), 0), -1);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(gMaskChanges, 0);
    EXPECT_EQ(kvOSMakeDir((scratch / "folder//").c_str(), 0), 0);
    EXPECT_GT(gMaskChanges, 0);
}
#endif

TEST(MakeDir, OnlyTheLastComponentIsMade) {
    kvtest::ScratchFolder scratch;
    EXPECT_EQ(kvOSMakeDir((scratch / "missing/folder").c_str(), 0), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kvOSMakeDir(scratch.path().c_str(), 0), -1);
    EXPECT_EQ(errno, EEXIST);
}

TEST(MakeDir, NetworkPathsAndUnusableOnesAreRefused) {
    kvtest::ScratchFolder scratch;
    fs::current_path(scratch.path());
    fs::create_directories("http:/host");
    EXPECT_EQ(kvOSMakeDir("http://host/folder", 0), -1);
    EXPECT_FALSE(fs::exists("http:/host/folder"));
    EXPECT_EQ(kvOSMakeDir("http:/host/folder", 0), 0);
    EXPECT_EQ(kvOSMakeDir(nullptr, 0), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSMakeDir(kTooLong.c_str(), 0), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(ChangeDir, ChangesTheWorkingDirectory) {
    kvtest::ScratchFolder scratch;
    const std::string folder = fs::canonical(scratch.path());
    EXPECT_EQ(kvOSChangeDir(folder.c_str()), 0);
    EXPECT_EQ(textOf(kvOSGetCWD), folder);
    EXPECT_EQ(kvOSChangeDir("missing"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(textOf(kvOSGetCWD), folder);
}

TEST(ChangeDir, AUrlTextIsALocalName) {
    kvtest::ScratchFolder scratch;
    fs::create_directories(scratch / "http:/host");
    ASSERT_EQ(kvOSChangeDir(scratch.path().c_str()), 0);
    EXPECT_EQ(kvOSChangeDir("http://host"), 0);
}

TEST(ChangeDir, UnusablePathsFail) {
    EXPECT_EQ(kvOSChangeDir(""), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kvOSChangeDir(nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSChangeDir(kTooLong.c_str()), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(WorkingDirectory, ThatIsGoneGivesAnEmptyBuffer) {
    kvtest::ScratchFolder scratch;
    fs::create_directory(scratch / "gone");
    ASSERT_EQ(kvOSChangeDir((scratch / "gone").c_str()), 0);
    fs::remove(scratch / "gone");
    char buffer[4096] = "untouched";
    EXPECT_EQ(kvOSGetCWD(buffer), 0xFFFFFFFFu);
    EXPECT_STREQ(buffer, "");
}

TEST(AppDir, IsTheDirectoryOfTheProgramWithASlash) {
    EXPECT_EQ(textOf(kvOSGetAppDir), fs::read_symlink("/proc/self/exe").parent_path().string() + "/");
}

// ---- home and its folders ----

TEST(HomeDir, IsTheEnvironmentsWithASlash) {
    setenv("HOME", "/users/some one", 1);
    EXPECT_EQ(textOf(kvOSGetHomeDir), "/users/some one/");
    setenv("HOME", "relative", 1);
    EXPECT_EQ(textOf(kvOSGetHomeDir), "relative/");
    setenv("HOME", "C:/users", 1);
    EXPECT_EQ(textOf(kvOSGetHomeDir), "C:/users/");
}

TEST(HomeDir, ASourceWithAFinalSlashComesOutWithTwo) {
    setenv("HOME", "/users/someone/", 1);
    EXPECT_EQ(textOf(kvOSGetHomeDir), "/users/someone//");
}

TEST(HomeDir, ComesFromTheUserDatabaseWhenTheEnvironmentHasNone) {
    const passwd* entry = getpwuid(getuid());
    const std::string expected = std::string(entry != nullptr ? entry->pw_dir : "/var/tmp/") + "/";
    setenv("HOME", "", 1);
    EXPECT_EQ(textOf(kvOSGetHomeDir), expected);
    unsetenv("HOME");
    EXPECT_EQ(textOf(kvOSGetHomeDir), expected);
}

TEST(HomeDir, OfAnUnknownUserIsTheTemporaryFolderWithASecondSlash) {
    if (getuid() != 0 || getpwuid(kvtest::kUnknownUser) != nullptr) GTEST_SKIP() << "needs an unknown user";
    unsetenv("HOME");
    EXPECT_TRUE(kvtest::trueAsOrdinaryUser([] { return textOf(kvOSGetHomeDir) == "/var/tmp//"; }));
}

#ifdef __GLIBC__
TEST(HomeDir, ThatIsEmptyInTheUserDatabaseIsAFailure) {
    unsetenv("HOME");
    gUserHasNoHome = true;
    for (const BufferCall call : {kvOSGetHomeDir, kvOSGetMusicDir}) {
        char buffer[4096] = "untouched";
        EXPECT_EQ(call(buffer), 0xFFFFFFFFu);
        EXPECT_STREQ(buffer, "");
    }
    gUserHasNoHome = false;
}

TEST(ConfigDir, BelowAnEmptyHomeIsAFolderOfTheWorkingDirectory) {
    kvtest::ScratchFolder scratch;
    fs::current_path(scratch.path());
    unsetenv("HOME");
    gUserHasNoHome = true;
    char buffer[4096];
    EXPECT_EQ(kvOSGetConfigDir(buffer, 1), -1);
    EXPECT_STREQ(buffer, "Library/Application Support/Korvane/");
    fs::create_directories("Library/Application Support");
    EXPECT_EQ(kvOSGetConfigDir(buffer, 1), 0);
    EXPECT_TRUE(fs::is_directory("Library/Application Support/Korvane"));
    gUserHasNoHome = false;
}
#endif

TEST(HomeDir, ThatDoesNotFitLeavesTheBufferEmpty) {
    for (const std::size_t length : {5000u, 4095u}) {
        setenv("HOME", ("/" + std::string(length - 1, 'x')).c_str(), 1);
        char buffer[4096] = "untouched";
        errno = 0;
        EXPECT_EQ(kvOSGetHomeDir(buffer), 0xFFFFFFFFu);
        EXPECT_EQ(errno, ENAMETOOLONG);
        EXPECT_STREQ(buffer, "");
    }
    setenv("HOME", ("/" + std::string(4093, 'x')).c_str(), 1);
    EXPECT_EQ(textOf(kvOSGetHomeDir).size(), 4095u);
    char buffer[4096] = "untouched";
    EXPECT_EQ(kvOSGetMusicDir(buffer), 0xFFFFFFFFu);
    EXPECT_STREQ(buffer, "");
}

TEST(HomeFolders, StandBehindADoubleSlash) {
    setenv("HOME", "/users/someone", 1);
    EXPECT_EQ(textOf(kvOSGetPicturesDir), "/users/someone//Pictures/");
    EXPECT_EQ(textOf(kvOSGetDocumentsDir), "/users/someone//Documents/");
    EXPECT_EQ(textOf(kvOSGetMoviesDir), "/users/someone//Videos/");  // not Movies
    EXPECT_EQ(textOf(kvOSGetMusicDir), "/users/someone//Music/");
}

TEST(Folders, TheHttpFolderIsAConstant) { EXPECT_EQ(textOf(kvOSGetHTTPDDir), "/var/www/html/"); }

TEST(Folders, ANullBufferIsRefused) {
    for (const BufferCall call : {kvOSGetCWD, kvOSGetAppDir, kvOSGetHomeDir, kvOSGetPicturesDir, kvOSGetDocumentsDir,
                                  kvOSGetMoviesDir, kvOSGetMusicDir, kvOSGetHTTPDDir}) {
        errno = 0;
        EXPECT_EQ(call(nullptr), 0xFFFFFFFFu);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(kvOSGetConfigDir(nullptr, 0), -1);
}

// ---- settings ----

TEST(ConfigDir, TheSystemWideOneIsMadeWhenItCanBe) {
    kvtest::ScratchFolder scratch;
    const SystemFolderMoved moved(scratch.path());
    char buffer[4096];
    EXPECT_EQ(kvOSGetConfigDir(buffer, 0), 0);
    EXPECT_EQ(buffer, kSystemConfig);
    EXPECT_EQ(modeOf(scratch / "Korvane"), 0775u);
    EXPECT_EQ(kvOSGetConfigDir(buffer, 2), 0);  // it is there now, and only bit 0 counts
    EXPECT_EQ(buffer, kSystemConfig);
}

TEST(ConfigDir, FallsBackToTheUsersOwn) {
    kvtest::ScratchFolder scratch;
    const SystemFolderMoved moved(scratch / "missing");
    makeUserLibrary();
    char buffer[4096];
    EXPECT_EQ(kvOSGetConfigDir(buffer, 0), 0);
    EXPECT_EQ(buffer, userConfig());
    EXPECT_EQ(modeOf(userConfig()), 0775u);
}

TEST(ConfigDir, FallsBackWithoutTheRightToWriteSystemWide) {
    kvtest::ScratchFolder scratch;
    fs::create_directories(scratch / "locked");
    fs::create_directories(scratch / "home/Library/Application Support");
    kvtest::openToAll(scratch.path());
    ASSERT_EQ(chmod((scratch / "locked").c_str(), 0555), 0);
    ASSERT_EQ(chmod((scratch / "home/Library/Application Support").c_str(), 0777), 0);
    setenv("HOME", (scratch / "home").c_str(), 1);
    const SystemFolderMoved moved(scratch / "locked");
    EXPECT_TRUE(kvtest::trueAsOrdinaryUser([] {
        char buffer[4096];
        return kvOSGetConfigDir(buffer, 0) == 0 && buffer == userConfig() && fs::is_directory(buffer);
    }));
    EXPECT_FALSE(fs::exists(scratch / "locked/Korvane"));
}

TEST(ConfigDir, TheFlagAsksForTheUsersOwn) {
    kvtest::ScratchFolder scratch;
    const SystemFolderMoved moved(scratch.path());
    makeUserLibrary();
    char buffer[4096];
    EXPECT_EQ(kvOSGetConfigDir(buffer, 1), 0);
    EXPECT_EQ(buffer, userConfig());
    EXPECT_FALSE(fs::exists(scratch / "Korvane"));
}

TEST(ConfigDir, NeedsTheFolderAroundTheUsersOwnAndKeepsTheText) {
    char buffer[4096];
    EXPECT_EQ(kvOSGetConfigDir(buffer, 1), -1);
    EXPECT_EQ(buffer, userConfig());
}

TEST(ConfigDir, ANameOnTheListCountsAsThere) {
    gvecNames = {kSystemConfig.c_str()};
    kvtest::ScratchFolder scratch;
    const SystemFolderMoved moved(scratch.path());
    char buffer[4096];
    EXPECT_EQ(kvOSGetConfigDir(buffer, 0), 0);
    EXPECT_EQ(buffer, kSystemConfig);
    EXPECT_FALSE(fs::exists(scratch / "Korvane"));
    gvecNames.clear();
}

TEST(ConfigDir, AHomeThatDoesNotFitFailsWithAnEmptyBuffer) {
    setenv("HOME", kTooLong.c_str(), 1);
    char buffer[4096] = "untouched";
    EXPECT_EQ(kvOSGetConfigDir(buffer, 1), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_STREQ(buffer, "");
}
