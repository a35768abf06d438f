// The pair of calls for shared memory. Names hold the process's id, since they are the machine's.
#include "kvos/shared_memory.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/captured_messages.h"
#include "system/segment_names.h"

namespace {

using kvtest::isThere;
using kvtest::OwnName;

void* const kAllOnes = reinterpret_cast<void*>(~std::uintptr_t{0});

/// The descriptor stays open by design.
void closeAll(kvOSSMem* record) {
    const int descriptor = static_cast<int>(record->nDescriptor);
    EXPECT_EQ(kvOSSMemClose(record), 0);
    close(descriptor);
}

TEST(SharedMemory, RecordHoldsWhatWasAskedAndGiven) {
    const OwnName name("record");
    kvtest::CapturedMessages messages;
    void* memory = nullptr;
    kvOSSMem* const record = kvOSSMemOpen(name.path(), 0xABCD1234, 5000, &memory);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->pMemory, memory);
    EXPECT_EQ(record->dwSize, 5000u);
    EXPECT_EQ(record->dwFlags, 0xABCD1234u);
    EXPECT_STREQ(record->szName, name.path());
    struct stat told {};
    ASSERT_EQ(fstat(static_cast<int>(record->nDescriptor), &told), 0);
    EXPECT_EQ(told.st_size, 5000);
    EXPECT_EQ(std::string(static_cast<char*>(memory), 5000), std::string(5000, '\0'));
    std::memset(memory, 'x', 5000);
    closeAll(record);
    EXPECT_FALSE(isThere(name));
    EXPECT_EQ(messages.text(), "");
}

TEST(SharedMemory, PermissionsAre666InDecimal) {
    const OwnName name("mode");
    umask(0);
    void* memory = nullptr;
    kvOSSMem* const record = kvOSSMemOpen(name.path(), 0, 1, &memory);
    ASSERT_NE(record, nullptr);
    struct stat told {};
    ASSERT_EQ(fstat(static_cast<int>(record->nDescriptor), &told), 0);
    EXPECT_EQ(told.st_mode & 07777, 01232u);
    closeAll(record);
}

TEST(SharedMemory, SecondOpenEmptiesTheSegment) {
    if (geteuid() != 0) GTEST_SKIP() << "the permissions of a segment let only root open it again";
    const OwnName name("again");
    void* first = nullptr;
    void* second = nullptr;
    kvOSSMem* const one = kvOSSMemOpen(name.path(), 0, 4096, &first);
    ASSERT_NE(one, nullptr);
    std::strcpy(static_cast<char*>(first), "old");
    kvOSSMem* const two = kvOSSMemOpen(name.path(), 0, 4096, &second);
    ASSERT_NE(two, nullptr);
    EXPECT_STREQ(static_cast<char*>(second), "");
    std::strcpy(static_cast<char*>(second), "new");
    EXPECT_STREQ(static_cast<char*>(first), "new");
    closeAll(one);
    EXPECT_EQ(kvOSSMemClose(two), -1);  // its name is gone, and it is freed all the same
    EXPECT_EQ(errno, ENOENT);
}

TEST(SharedMemory, AnotherProcessWritesIntoIt) {
    const OwnName name("child");
    void* memory = nullptr;
    kvOSSMem* const record = kvOSSMemOpen(name.path(), 0, 64, &memory);
    ASSERT_NE(record, nullptr);
    const pid_t child = fork();
    if (child == 0) {
        std::strcpy(static_cast<char*>(memory), "from the child");
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_STREQ(static_cast<char*>(memory), "from the child");
    closeAll(record);
    EXPECT_FALSE(isThere(name));
}

TEST(SharedMemory, CloseLeavesTheDescriptorOpen) {
    const OwnName name("descriptor");
    void* memory = nullptr;
    kvOSSMem* const record = kvOSSMemOpen(name.path(), 0, 16, &memory);
    ASSERT_NE(record, nullptr);
    const int descriptor = static_cast<int>(record->nDescriptor);
    EXPECT_EQ(kvOSSMemClose(record), 0);
    EXPECT_NE(fcntl(descriptor, F_GETFD), -1);
    EXPECT_EQ(close(descriptor), 0);
}

TEST(SharedMemory, SegmentThatCannotBeMappedIsARecordAllTheSame) {
    const OwnName name("empty");
    void* memory = nullptr;
    kvOSSMem* const record = kvOSSMemOpen(name.path(), 0, 0, &memory);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(memory, kAllOnes);
    EXPECT_EQ(record->pMemory, kAllOnes);
    EXPECT_TRUE(isThere(name));
    closeAll(record);
    EXPECT_FALSE(isThere(name));
}

TEST(SharedMemory, SizeThatIsRefusedIsAFailureAndKeepsItsReason) {
    const OwnName name("large");
    const rlimit small{4096, RLIM_INFINITY};
    signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const int before = dup(0);
    close(before);
    void* memory = &memory;
    errno = 0;
    kvOSSMem* const record = kvOSSMemOpen(name.path(), 0, 8192, &memory);
    if (record != nullptr) {
        closeAll(record);
        GTEST_SKIP() << "the limit of files does not hold for segments here";
    }
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(memory, &memory);
    EXPECT_EQ(fcntl(before, F_GETFD), -1);  // nothing was left open
    shm_unlink(name.path());
}

TEST(SharedMemory, NameThatTheSystemRefusesIsAFailure) {
    void* memory = &memory;
    EXPECT_EQ(kvOSSMemOpen("/with/slash", 0, 16, &memory), nullptr);
    EXPECT_EQ(kvOSSMemOpen("", 0, 16, &memory), nullptr);
    EXPECT_EQ(memory, &memory);
}

TEST(SharedMemory, NameLongerThanTheFieldIsRefused) {
    void* memory = &memory;
    EXPECT_EQ(kvOSSMemOpen(std::string(4095, 'n').c_str(), 0, 16, &memory), nullptr);  // by the system
    for (const std::size_t length : {4096u, 5000u, 100000u}) {
        errno = 0;
        EXPECT_EQ(kvOSSMemOpen(std::string(length, 'n').c_str(), 0, 16, &memory), nullptr) << length;
        EXPECT_EQ(errno, ENAMETOOLONG) << length;
    }
    EXPECT_EQ(memory, &memory);
}

TEST(SharedMemory, NullIsRefused) {
    void* memory = &memory;
    errno = 0;
    EXPECT_EQ(kvOSSMemOpen(nullptr, 0, 16, &memory), nullptr);
    EXPECT_EQ(errno, EINVAL);
    const OwnName name("null");
    EXPECT_EQ(kvOSSMemOpen(name.path(), 0, 16, nullptr), nullptr);
    EXPECT_FALSE(isThere(name));
    errno = 0;
    EXPECT_EQ(kvOSSMemClose(nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
}

}  // namespace
