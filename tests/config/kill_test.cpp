// A process that is killed while it saves: the next one finds the settings as they were before or after.
//
// The child saves over and over, two values always being equal, and is killed at a random moment. There is no window in
// which the settings are lost: the file is replaced by a rename, and the ring of backups never holds the only copy. The
// one window that the steps of a recovery leave, between the two renames, is covered by the backup.
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

#include "config/open_store.h"

namespace {

using namespace kvtest;

[[noreturn]] void saveForEver(const std::string& file, std::uint32_t number, int started) {
    OpenStore store(file);
    for (;; ++number) {
        setDword(store, "K", "First", number);
        setDword(store, "K", "Last", number);
        kvCFGSave(store, nullptr, 0);
        if (write(started, "x", 1) != 1) _exit(1);
    }
}

/// Runs the child to its first finished save, and so many microseconds on.
void killWhileSaving(const std::string& file, std::uint32_t number, unsigned microseconds) {
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t child = fork();
    if (child == 0) saveForEver(file, number, pipes[1]);
    close(pipes[1]);
    char one = 0;
    EXPECT_EQ(read(pipes[0], &one, 1), 1);
    const timespec moment{0, static_cast<long>(microseconds) * 1000};
    nanosleep(&moment, nullptr);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(pipes[0]);
}

TEST(Kill, WhileSavingLosesNothing) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    std::string filler;
    for (int i = 0; i < 300; ++i) filler += "<V" + std::to_string(i) + " Value=\"1\" Type=\"2\" />";
    makeFile(file, configWith("<K Type=\"0\"><First Value=\"1\" Type=\"2\" />" + filler +
                              "<Last Value=\"1\" Type=\"2\" /></K>"));
    std::uint32_t number = 1;
    for (int round = 0; round < 200; ++round) {
        killWhileSaving(file, number + 1, static_cast<unsigned>(random() % 2000));
        OpenStore store(file);
        ASSERT_TRUE(store.isOpen());
        const auto first = dwordOf(store, "K", "First");
        ASSERT_TRUE(first.has_value()) << "round " << round;
        EXPECT_EQ(first, dwordOf(store, "K", "Last")) << "round " << round;
        EXPECT_GT(*first, number) << "a save that was finished is lost in round " << round;
        number = *first;
        ASSERT_FALSE(std::filesystem::exists(file + ".bad")) << "round " << round;
    }
}

}  // namespace
