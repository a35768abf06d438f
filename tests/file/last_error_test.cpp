// The last error, and the two calls that stand for asynchronous I/O that does not exist.
#include <cerrno>
#include <gtest/gtest.h>

#include "kvos/file.h"

TEST(LastError, IsErrno) {
    EXPECT_EQ(kvOSSetLastError(997), 997u);
    EXPECT_EQ(errno, 997);
    errno = 59;
    EXPECT_EQ(kvOSGetLastError(), 59u);
    EXPECT_EQ(kvOSSetLastError(0xFFFFFFFF), 0xFFFFFFFFu);
    EXPECT_EQ(errno, -1);
    EXPECT_EQ(kvOSGetLastError(), 0xFFFFFFFFu);
}

TEST(Overlapped, CallsAlwaysSayDone) {
    EXPECT_EQ(kvOSHasOverlappedIoCompleted(nullptr), 1u);
    EXPECT_EQ(kvOSGetOverlappedResult(-1, nullptr, nullptr, 0), 1u);
}
