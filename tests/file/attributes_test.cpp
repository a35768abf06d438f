// Attributes, times and the read-only state by name.
#include "kvos/attributes.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "kvos/find.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

constexpr const char* kUrl = "http://127.0.0.1:1/clip";
const std::string kTooLong(5000, 'x');

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// A file with a mode of its own, as text for the calls.
std::string fileWithMode(kvtest::ScratchFolder& scratch, mode_t mode) {
    const std::string path = scratch / "file";
    ::unlink(path.c_str());
    kvtest::makeFile(path, "abc");
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
}

void makeSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    const int end = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(end, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(end);
}

struct stat statusOf(uid_t owner, gid_t group, mode_t mode) {
    struct stat status {};
    status.st_uid = owner;
    status.st_gid = group;
    status.st_mode = mode;
    return status;
}

}  // namespace

// ---- mode bits ----

TEST(ModeBits, ReadOnlyIsReadableAndNotWritableForTheOwnersClass) {
    for (mode_t mode = 0; mode < 01000; ++mode) {
        const struct stat mine = statusOf(geteuid(), getegid() + 1, S_IFREG | mode);
        EXPECT_EQ(UTIL_IsReadOnlyBitsSet(&mine), (mode & 0600) == 0400 ? 1u : 0u) << mode;
        const struct stat ofGroup = statusOf(geteuid() + 1, getegid(), S_IFREG | mode);
        EXPECT_EQ(UTIL_IsReadOnlyBitsSet(&ofGroup), (mode & 060) == 040 ? 1u : 0u) << mode;
        const struct stat ofOthers = statusOf(geteuid() + 1, getegid() + 1, S_IFREG | mode);
        EXPECT_EQ(UTIL_IsReadOnlyBitsSet(&ofOthers), (mode & 06) == 04 ? 1u : 0u) << mode;
    }
}

TEST(ModeBits, OwnershipGoesAheadOfTheGroup) {
    const struct stat status = statusOf(geteuid(), getegid(), S_IFREG | 0640);
    EXPECT_EQ(UTIL_IsReadOnlyBitsSet(&status), 0u);
}

TEST(ModeBits, ExecutableIsTheBitOfTheSameClassAndNeverADirectory) {
    for (mode_t mode = 0; mode < 01000; ++mode) {
        const struct stat mine = statusOf(geteuid(), getegid(), S_IFREG | mode);
        EXPECT_EQ(UTIL_IsExecuteBitsSet(&mine), (mode & 0100) != 0 ? 1u : 0u) << mode;
        const struct stat ofGroup = statusOf(geteuid() + 1, getegid(), S_IFREG | mode);
        EXPECT_EQ(UTIL_IsExecuteBitsSet(&ofGroup), (mode & 010) != 0 ? 1u : 0u) << mode;
        const struct stat ofOthers = statusOf(geteuid() + 1, getegid() + 1, S_IFREG | mode);
        EXPECT_EQ(UTIL_IsExecuteBitsSet(&ofOthers), (mode & 01) != 0 ? 1u : 0u) << mode;
        const struct stat folder = statusOf(geteuid(), getegid(), S_IFDIR | mode);
        EXPECT_EQ(UTIL_IsExecuteBitsSet(&folder), 0u);
    }
}

TEST(ModeBits, ANullStatusHasNone) {
    EXPECT_EQ(UTIL_IsReadOnlyBitsSet(nullptr), 0u);
    EXPECT_EQ(UTIL_IsExecuteBitsSet(nullptr), 0u);
}

// ---- kvOSGetFileAttributes ----

TEST(FileAttributes, OfFilesAndFolders) {
    kvtest::ScratchFolder scratch;
    EXPECT_EQ(kvOSGetFileAttributes(fileWithMode(scratch, 0644).c_str()), KVATTR_NORMAL);
    EXPECT_EQ(kvOSGetFileAttributes(fileWithMode(scratch, 0400).c_str()), KVATTR_READONLY);
    EXPECT_EQ(kvOSGetFileAttributes(fileWithMode(scratch, 0444).c_str()), KVATTR_READONLY);
    EXPECT_EQ(kvOSGetFileAttributes(fileWithMode(scratch, 0200).c_str()), KVATTR_NORMAL);
    EXPECT_EQ(kvOSGetFileAttributes(scratch.path().c_str()), KVATTR_DIRECTORY);
    ASSERT_EQ(chmod(scratch.path().c_str(), 0500), 0);
    EXPECT_EQ(kvOSGetFileAttributes(scratch.path().c_str()), KVATTR_DIRECTORY | KVATTR_READONLY);
    ASSERT_EQ(chmod(scratch.path().c_str(), 0700), 0);
}

TEST(FileAttributes, OfAMissingLocalPathAreZero) {
    kvtest::ScratchFolder scratch;
    EXPECT_EQ(kvOSGetFileAttributes((scratch / "missing").c_str()), 0u);
    EXPECT_EQ(errno, ENOENT);
    std::filesystem::create_symlink("nowhere", scratch / "link");
    EXPECT_EQ(kvOSGetFileAttributes((scratch / "link").c_str()), 0u);
    EXPECT_EQ(kvOSGetFileAttributes(""), 0u);
}

TEST(FileAttributes, OfANullPathAreInvalidWithLastErrorMinusOne) {
    errno = 0;
    EXPECT_EQ(kvOSGetFileAttributes(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(errno, -1);
}

TEST(FileAttributes, OfWhatIsNeitherFileNorFolderAreInvalidWithLastErrorMinusOne) {
    kvtest::ScratchFolder scratch;
    makeSocket(scratch / "socket");
    ASSERT_EQ(mkfifo((scratch / "pipe").c_str(), 0600), 0);
    for (const std::string& path : {scratch / "socket", scratch / "pipe", std::string("/dev/null")}) {
        errno = 0;
        EXPECT_EQ(kvOSGetFileAttributes(path.c_str()), 0xFFFFFFFFu) << path;
        EXPECT_EQ(errno, -1) << path;
    }
}

TEST(FileAttributes, OfAMissingUrlAreInvalid) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSGetFileAttributes(kUrl), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSGetFileAttributes((std::string(kUrl) + "/").c_str()), 0xFFFFFFFFu);
}

TEST(FileAttributes, OfAKnownUrlFollowItsLastCharacter) {
    gvecNames = {"http://host/a", "http://host/a/", "FTP://host/a\\"};
    EXPECT_EQ(kvOSGetFileAttributes("http://host/a"), KVATTR_NORMAL);
    EXPECT_EQ(kvOSGetFileAttributes("http://host/a/"), KVATTR_DIRECTORY);
    EXPECT_EQ(kvOSGetFileAttributes("FTP://host/a\\"), KVATTR_DIRECTORY);
    gvecNames.clear();
}

TEST(FileAttributes, APathThatDoesNotFitIsRefused) {
    errno = 0;
    EXPECT_EQ(kvOSGetFileAttributes(kTooLong.c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

// ---- the single questions ----

TEST(FileQuestions, NothingIsHiddenOrASystemFile) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / ".hidden");
    gvecNames = {kUrl};
    for (const std::string& path : {scratch / ".hidden", scratch / "missing", std::string(kUrl), kTooLong}) {
        EXPECT_EQ(kvOSFileIsHidden(path.c_str()), 0u);
        EXPECT_EQ(kvOSFileIsSystem(path.c_str()), 0u);
    }
    gvecNames.clear();
    EXPECT_EQ(kvOSFileIsHidden(nullptr), 0u);
    EXPECT_EQ(kvOSFileIsSystem(nullptr), 0u);
}

TEST(FileQuestions, HiddenAndSystemLookAUrlUpAllTheSame) {
    kvtest::CapturedMessages messages;
    kvOSFileIsHidden(kUrl);
    kvOSFileIsSystem(kUrl);
    EXPECT_EQ(messages.count("Error: opening <http://127.0.0.1:1/clip> "), 2u);
}

TEST(FileQuestions, AFolderIsADirectoryAndSoIsASocket) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "file");
    makeSocket(scratch / "socket");
    ASSERT_EQ(mkfifo((scratch / "pipe").c_str(), 0600), 0);
    std::filesystem::create_directory_symlink(scratch.path(), scratch / "link");
    EXPECT_EQ(kvOSFileIsDir(scratch.path().c_str()), 1u);
    EXPECT_EQ(kvOSFileIsDir((scratch / "link").c_str()), 1u);
    EXPECT_EQ(kvOSFileIsDir((scratch / "socket").c_str()), 1u);  // only bit 0x4000 of the mode counts
    EXPECT_EQ(kvOSFileIsDir((scratch / "file").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsDir((scratch / "pipe").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsDir((scratch / "missing").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsDir("/dev/null"), 0u);
    EXPECT_EQ(kvOSFileIsDir(nullptr), 0u);
}

TEST(FileQuestions, ABlockDeviceIsADirectory) {
    bool isThere = false;
    for (const auto& entry : std::filesystem::directory_iterator("/dev")) {
        std::error_code error;
        if (!entry.is_block_file(error)) continue;
        isThere = true;
        EXPECT_EQ(kvOSFileIsDir(entry.path().c_str()), 1u) << entry.path();
    }
    if (!isThere) GTEST_SKIP() << "this machine shows no block device";
}

TEST(FileQuestions, AUrlIsADirectoryByItsAttributes) {
    gvecNames = {"http://host/a", "http://host/a/"};
    EXPECT_EQ(kvOSFileIsDir("http://host/a/"), 1u);
    EXPECT_EQ(kvOSFileIsDir("http://host/a"), 0u);
    gvecNames.clear();
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileIsDir(kUrl), 0u);
}

TEST(FileQuestions, ReadOnlyMeansThatNobodyAtAllMayWrite) {
    kvtest::ScratchFolder scratch;
    EXPECT_EQ(kvOSFileIsReadOnly(fileWithMode(scratch, 0444).c_str()), 1u);
    EXPECT_EQ(kvOSFileIsReadOnly(fileWithMode(scratch, 0).c_str()), 1u);
    for (const mode_t mode : {0200u, 0020u, 0002u, 0644u}) {
        EXPECT_EQ(kvOSFileIsReadOnly(fileWithMode(scratch, mode).c_str()), 0u) << mode;
    }
    // The attribute bit asks another question.
    EXPECT_EQ(kvOSGetFileAttributes(fileWithMode(scratch, 0).c_str()), KVATTR_NORMAL);
    EXPECT_EQ(kvOSGetFileAttributes(fileWithMode(scratch, 0420).c_str()), KVATTR_READONLY);
    EXPECT_EQ(kvOSFileIsReadOnly((scratch / "missing").c_str()), 0u);
    EXPECT_EQ(kvOSFileIsReadOnly(nullptr), 0u);
}

TEST(FileQuestions, AUrlIsNeverReadOnlyEvenIfALocalFileOfThatNameIs) {
    kvtest::ScratchFolder scratch;
    std::filesystem::current_path(scratch.path());
    std::filesystem::create_directories("http:/host");
    kvtest::makeFile("http:/host/clip");
    ASSERT_EQ(chmod("http:/host/clip", 0444), 0);
    EXPECT_EQ(kvOSFileIsReadOnly("http:/host/clip"), 1u);
    EXPECT_EQ(kvOSFileIsReadOnly("http://host/clip"), 0u);
}

// ---- kvOSSetFileReadOnly ----

TEST(SetFileReadOnly, LeavesAWritableFileWritableAndTurnsOnAllElse) {
    kvtest::ScratchFolder scratch;
    const std::string path = fileWithMode(scratch, 0600);
    EXPECT_EQ(kvOSSetFileReadOnly(path.c_str(), 1), 1u);
    // Set-user-id, set-group-id and sticky go on as well, as far as the system lets this user have them.
    kvtest::makeFile(scratch / "same");
    ASSERT_EQ(chmod((scratch / "same").c_str(), 07755), 0);
    EXPECT_EQ(modeOf(path), modeOf(scratch / "same"));
    EXPECT_EQ(kvOSFileIsReadOnly(path.c_str()), 0u);
    EXPECT_EQ(kvOSSetFileReadOnly(path.c_str(), 1), 1u);
}

TEST(SetFileReadOnly, ClearingGivesAllThreeWriteBits) {
    kvtest::ScratchFolder scratch;
    const std::string path = fileWithMode(scratch, 0440);
    EXPECT_EQ(kvOSSetFileReadOnly(path.c_str(), 7), 0u);
    EXPECT_EQ(kvOSSetFileReadOnly(path.c_str(), 0), 1u);
    EXPECT_EQ(modeOf(path), 0662u);
    EXPECT_EQ(kvOSSetFileReadOnly(path.c_str(), 0), 0u);
}

TEST(SetFileReadOnly, AMissingFileCountsAsChangedByAFlagAndAsDoneWithoutOne) {
    EXPECT_EQ(kvOSSetFileReadOnly("/nowhere/at/all", 1), 1u);
    EXPECT_EQ(kvOSSetFileReadOnly("/nowhere/at/all", 0), 0u);
}

TEST(SetFileReadOnly, NetworkPathsAndUnusableOnesAreRefused) {
    kvtest::ScratchFolder scratch;
    std::filesystem::current_path(scratch.path());
    std::filesystem::create_directories("http:/host");
    kvtest::makeFile("http:/host/clip");
    ASSERT_EQ(chmod("http:/host/clip", 0444), 0);
    EXPECT_EQ(kvOSSetFileReadOnly("http://host/clip", 0), 0xFFFFFFFFu);
    EXPECT_EQ(modeOf("http:/host/clip"), 0444u);
    EXPECT_EQ(kvOSSetFileReadOnly(nullptr, 1), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(kvOSSetFileReadOnly(kTooLong.c_str(), 1), 0xFFFFFFFFu);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

// ---- times ----

TEST(FileTimes, OfALocalFileAreItsWholeSeconds) {
    kvtest::ScratchFolder scratch;
    const std::string path = fileWithMode(scratch, 0600);
    const timespec times[2] = {{1000000000, 900000000}, {-5, 0}};  // access, modification (ahead of 1970)
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(kvOSFileTimeAccessed(path.c_str()), 1000000000);
    EXPECT_EQ(kvOSFileTimeModified(path.c_str()), -5);
    EXPECT_EQ(kvOSFileTimeCreated(path.c_str()), status.st_ctime);
}

TEST(FileTimes, OfWhatCantBeExaminedAreZero) {
    for (auto* call : {kvOSFileTimeCreated, kvOSFileTimeModified, kvOSFileTimeAccessed}) {
        EXPECT_EQ(call("/nowhere/at/all"), 0);
        EXPECT_EQ(call(nullptr), 0);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(call(kTooLong.c_str()), 0);
        EXPECT_EQ(errno, ENAMETOOLONG);
    }
}

TEST(FileTimes, OfEveryUrlAreOneConstantAndNobodyIsAsked) {
    kvtest::CapturedMessages messages;
    for (auto* call : {kvOSFileTimeCreated, kvOSFileTimeModified, kvOSFileTimeAccessed}) {
        EXPECT_EQ(call(kUrl), 0x01BA476722F82000);
        EXPECT_EQ(call("FTP://host/a"), 0x01BA476722F82000);
#ifdef KVUTIL_TESTS_WITH_S3
        EXPECT_EQ(call("s3://bucket/key"), 0x01BA476722F82000);
#else
        EXPECT_EQ(call("s3://bucket/key"), 0);
#endif
    }
    EXPECT_EQ(messages.text(), "");
}

TEST(FileTimes, TheConstantIsTheFirstOfJuly1995) {
    EXPECT_EQ(FILEFileTimeToUnixTime(KVFILETIME_NETWORK, nullptr), 804571200u);
}
