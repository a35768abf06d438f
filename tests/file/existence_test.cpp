// Whether a path names something that exists.
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "kvos/attributes.h"
#include "kvos/locator.h"
#include "support/captured_messages.h"
#include "support/scratch.h"
#include "tests/file/ordinary_user.h"

#if __has_include(<linux/seccomp.h>)
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stddef.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#define CAN_REFUSE_STATUS_CALLS
#endif

namespace {

class NameList : public ::testing::Test {
protected:
    ~NameList() override { gvecNames.clear(); }
};

#ifdef CAN_REFUSE_STATUS_CALLS
/// From now on every question for a file's status fails in this process, while opening works.
bool refuseStatusCalls() {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
#ifdef SYS_stat
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_stat, 3, 0),
#else
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0xFFFF, 3, 0),
#endif
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_newfstatat, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_statx, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
    };
    const sock_fprog program{sizeof steps / sizeof steps[0], steps};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}
#endif

}  // namespace

TEST(Existence, FilesFoldersAndDevicesExist) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "a b [1] \xC3\xA4");
    EXPECT_EQ(kvOSFileExists((scratch / "a b [1] \xC3\xA4").c_str()), 1u);
    EXPECT_EQ(kvOSFileExistsInternal((scratch / "a b [1] \xC3\xA4").c_str()), 1u);
    EXPECT_EQ(kvOSFileExists(scratch.path().c_str()), 1u);
    EXPECT_EQ(kvOSFileExists((scratch.path() + "/").c_str()), 1u);
    EXPECT_EQ(kvOSFileExists("/dev/null"), 1u);
    EXPECT_EQ(kvOSFileExists((scratch / "a").c_str()), 0u);
}

TEST(Existence, ADanglingLinkDoesNotExist) {
    kvtest::ScratchFolder scratch;
    std::filesystem::create_symlink("nowhere", scratch / "link");
    EXPECT_EQ(kvOSFileExistsInternal((scratch / "link").c_str()), 0u);
}

TEST(Existence, NullAndEmptyPathsDoNotExist) {
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(kvOSFileExists(path), 0u);
        EXPECT_EQ(kvOSFileExistsInternal(path), 0u);
    }
}

TEST(Existence, APathThatDoesNotFitDoesNotExist) {
    errno = 0;
    EXPECT_EQ(kvOSFileExists(("/" + std::string(4095, 'x')).c_str()), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(Existence, AMissingLocalFileIsNotReported) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileExists("/nowhere/at/all"), 0u);
    EXPECT_EQ(messages.text(), "");
}

TEST(Existence, AMemoryNameDoesNotExist) { EXPECT_EQ(kvOSFileExists("mem://a"), 0u); }

TEST(Existence, AUrlThatNobodyServesDoesNotExist) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileExists("http://127.0.0.1:1/a"), 0u);
    EXPECT_EQ(messages.count("Error: opening <http://127.0.0.1:1/a> "), 1u);
}

TEST(Existence, ANetworkPathIsRedirectedOnceByTheOpen) {
    char source[] = "http://";
    char target[] = "http://127.0.0.1:1/";
    gszReDir_Source = source;
    gszReDir_NewDir = target;
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileExistsInternal("http://a"), 0u);
    EXPECT_EQ(messages.count("Error: opening <http://127.0.0.1:1/a> "), 1u);
    gszReDir_Source = gszReDir_NewDir = nullptr;
}

#ifdef CAN_REFUSE_STATUS_CALLS
TEST(Existence, AFileWithoutStatusExistsIfItOpens) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "a");
    kvtest::openToAll(scratch.path());
    const std::string there = scratch / "a";
    const std::string missing = scratch / "b";
    EXPECT_TRUE(kvtest::trueAsOrdinaryUser([&] {
        struct stat status;
        return refuseStatusCalls() && stat(there.c_str(), &status) != 0 && kvOSFileExistsInternal(there.c_str()) == 1 &&
               kvOSFileExistsInternal(missing.c_str()) == 0;
    }));
}
#endif

TEST_F(NameList, IsEmptyAtStart) { EXPECT_TRUE(gvecNames.empty()); }

TEST_F(NameList, ANameOnItExistsLetterByLetter) {
    gvecNames = {"/not/there", nullptr, "http://127.0.0.1:1/clip"};
    kvtest::CapturedMessages messages;
    EXPECT_EQ(kvOSFileExists("/not/there"), 1u);
    EXPECT_EQ(kvOSFileExists("/NOT/there"), 0u);
    EXPECT_EQ(kvOSFileExists("/not/there/"), 0u);
    EXPECT_EQ(kvOSFileExists("http://127.0.0.1:1/clip"), 1u);
    EXPECT_EQ(messages.text(), "");
}

TEST_F(NameList, OnlyTheOuterCallAsksIt) {
    gvecNames = {"/not/there"};
    EXPECT_EQ(kvOSFileExistsInternal("/not/there"), 0u);
}

TEST_F(NameList, HoldsPathsAsTheyAreGivenNotAsTheyAreRedirected) {
    char source[] = "/from";
    char target[] = "/to";
    gszReDir_Source = source;
    gszReDir_NewDir = target;
    gvecNames = {"/to/a"};
    EXPECT_EQ(kvOSFileExists("/from/a"), 0u);
    gvecNames = {"/from/a"};
    EXPECT_EQ(kvOSFileExists("/from/a"), 1u);
    gszReDir_Source = gszReDir_NewDir = nullptr;
}
