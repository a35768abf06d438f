// The program of the README.
#include <string>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(ReadAnywhere, PrintsSizeAndChecksumOfAClip) {
    makeFile("clip", "ab");
    const Outcome run = runProgram(READ_ANYWHERE_PROGRAM, {"clip"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "2 bytes, checksum 00000C21\n");
}

TEST(ReadAnywhere, AClipThatIsNotThereIsAFailure) {
    EXPECT_EQ(runProgram(READ_ANYWHERE_PROGRAM, {"none"}).exit, 1);
    EXPECT_EQ(runProgram(READ_ANYWHERE_PROGRAM, {}).exit, 1);
}

TEST(ReadAnywhere, AClipThatCanNotBeReadToItsEndIsAFailure) {
    const Outcome run = runProgram(READ_ANYWHERE_PROGRAM, {"."});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "0 bytes, checksum 00000000, and not to the end\n");
}

}  // namespace
