// The class for shared memory.
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kvos/shared_memory.h"
#include "system/segment_names.h"

namespace {

using kvtest::isThere;
using kvtest::OwnName;
using shoom::Shm;

/// What a process of its own ends with.
template <class Body>
int inAnotherProcess(Body body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::size_t openDescriptors() {
    std::size_t open = 0;
    for (int i = 0; i < 256; ++i) open += fcntl(i, F_GETFD) != -1 ? 1 : 0;
    return open;
}

/// The reason of a call that fails with this code and leaves nothing to look at.
int reasonOf(int code, Shm& segment, bool create) {
    errno = 0;
    const int result = segment.CreateOrOpen(create);
    const int reason = errno;
    EXPECT_EQ(result, code);
    EXPECT_EQ(segment.Data(), nullptr);
    return reason;
}

TEST(SharedSegment, NothingIsOpenBeforeTheFirstCall) {
    const OwnName name("fresh");
    const Shm segment(name.withoutSlash(), 100);
    EXPECT_EQ(segment.Path(), name.path());
    EXPECT_EQ(segment.Size(), 100u);
    EXPECT_EQ(segment.Data(), nullptr);
    EXPECT_FALSE(isThere(name));
}

TEST(SharedSegment, OpeningANameThatDoesNotExistGives120) {
    const OwnName name("none");
    Shm segment(name.withoutSlash(), 100);
    EXPECT_EQ(reasonOf(120, segment, false), ENOENT);
    EXPECT_FALSE(isThere(name));
}

TEST(SharedSegment, CreatorWritesAndAnotherProcessReads) {
    const OwnName name("shared");
    Shm creator(name.withoutSlash(), 4096);
    ASSERT_EQ(creator.CreateOrOpen(true), 0);
    std::strcpy(reinterpret_cast<char*>(creator.Data()), "for all to read");
    EXPECT_EQ(inAnotherProcess([&] {
                  Shm reader(name.withoutSlash(), 4096);
                  if (reader.CreateOrOpen(false) != 0) return 1;
                  return std::strcmp(reinterpret_cast<char*>(reader.Data()), "for all to read") == 0 ? 0 : 2;
              }),
              0);
}

TEST(SharedSegment, ReaderTakesTheNameWithIt) {
    const OwnName name("reader");
    Shm creator(name.withoutSlash(), 10);
    ASSERT_EQ(creator.CreateOrOpen(true), 0);
    EXPECT_TRUE(isThere(name));
    EXPECT_EQ(inAnotherProcess([&] {
                  Shm reader(name.withoutSlash(), 10);
                  return reader.CreateOrOpen(false);
                  // the reader's end comes before that of its process
              }),
              0);
    EXPECT_FALSE(isThere(name));
    creator.Data()[9] = 'x';  // what is mapped stays
    EXPECT_EQ(Shm(name.withoutSlash(), 10).CreateOrOpen(false), 120);
}

TEST(SharedSegment, OneThatNeverOpenedTakesTheNameWithItToo) {
    const OwnName name("bystander");
    Shm creator(name.withoutSlash(), 10);
    ASSERT_EQ(creator.CreateOrOpen(true), 0);
    errno = 77;
    { const Shm bystander(name.withoutSlash(), 10); }
    EXPECT_EQ(errno, 77);
    EXPECT_FALSE(isThere(name));
}

TEST(SharedSegment, CreatingOverAnExistingNameStartsWithZeroedMemory) {
    const OwnName name("over");
    Shm old(name.withoutSlash(), 4096);
    ASSERT_EQ(old.CreateOrOpen(true), 0);
    std::memset(old.Data(), 'x', 4096);
    Shm fresh(name.withoutSlash(), 8192);
    ASSERT_EQ(fresh.CreateOrOpen(true), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(fresh.Data()), 8192), std::string(8192, '\0'));
    EXPECT_EQ(old.Data()[0], 'x');  // another segment, though of the same name
}

TEST(SharedSegment, PermissionsAre0755) {
    const OwnName name("mode");
    umask(0);
    Shm creator(name.withoutSlash(), 10);
    ASSERT_EQ(creator.CreateOrOpen(true), 0);
    const int descriptor = shm_open(name.path(), O_RDONLY, 0);
    struct stat told {};
    EXPECT_EQ(fstat(descriptor, &told), 0);
    EXPECT_EQ(told.st_mode & 07777, 0755u);
    EXPECT_EQ(told.st_size, 10);
    close(descriptor);
}

TEST(SharedSegment, ReaderMayNotWrite) {
    const OwnName name("readonly");
    Shm creator(name.withoutSlash(), 10);
    ASSERT_EQ(creator.CreateOrOpen(true), 0);
    const int end = inAnotherProcess([&] {
        signal(SIGSEGV, SIG_DFL);
        signal(SIGBUS, SIG_DFL);
        Shm reader(name.withoutSlash(), 10);
        if (reader.CreateOrOpen(false) != 0) return 1;
        *const_cast<volatile std::uint8_t*>(reader.Data()) = 1;
        return 0;
    });
    EXPECT_TRUE(end == -SIGSEGV || end == -SIGBUS) << end;
    EXPECT_EQ(creator.Data()[0], 0);
}

TEST(SharedSegment, NameThatCannotBeMadeGives100) {
    Shm segment("with/slash", 10);
    EXPECT_EQ(segment.CreateOrOpen(true), 100);
    EXPECT_EQ(segment.CreateOrOpen(false), 120);
    Shm longer(std::string(5000, 'n'), 10);
    EXPECT_EQ(longer.CreateOrOpen(true), 100);
    EXPECT_EQ(longer.CreateOrOpen(false), 120);
}

TEST(SharedSegment, SizeThatNobodyHasGives100) {
    const OwnName name("huge");
    Shm segment(name.withoutSlash(), std::size_t{1} << 62);
    EXPECT_NE(reasonOf(100, segment, true), 0);
}

// A file system in memory takes any length; only the first touch of a page that it has no room for ends the process.
TEST(SharedSegment, SizeBeyondTheRoomOfAllSegmentsGives100AndLeavesNoName) {
    struct statvfs room {};
    if (statvfs("/dev/shm", &room) != 0 || room.f_blocks == 0) GTEST_SKIP() << "segments have no limit here";
    const OwnName name("room");
    {
        Shm segment(name.withoutSlash(), std::size_t{room.f_blocks} * room.f_frsize + 1);
        EXPECT_EQ(reasonOf(100, segment, true), ENOSPC);
    }
    EXPECT_FALSE(isThere(name));
    EXPECT_EQ(Shm(name.withoutSlash(), 4096).CreateOrOpen(true), 0);  // the room is free still
}

TEST(SharedSegment, SizeOfZeroCannotBeMapped) {
    const OwnName name("zero");
    Shm segment(name.withoutSlash(), 0);
    EXPECT_EQ(reasonOf(110, segment, true), EINVAL);
    EXPECT_TRUE(isThere(name));
}

TEST(SharedSegment, NothingStaysOpenOrMapped) {
    const OwnName name("closed");
    const std::size_t before = openDescriptors();
    {
        Shm segment(name.withoutSlash(), 4096);
        ASSERT_EQ(segment.CreateOrOpen(true), 0);
        EXPECT_EQ(openDescriptors(), before + 1);
        ASSERT_EQ(segment.CreateOrOpen(false), 0);  // lets go of what the first call opened
        EXPECT_EQ(openDescriptors(), before + 1);
        ASSERT_EQ(segment.CreateOrOpen(true), 0);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(isThere(name));
}

}  // namespace
