// Copies of local files beside the system's cp, a program of its own, whose start is part of its time.
//
// Each pass replaces the copy of the pass before, ours by deleting it, cp by writing over it after such a deletion. A
// cold pass begins with the source out of the page cache, where the system lets a program ask for that.
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/scratch.h"
#include "bench/topics.h"
#include "errlog.h"
#include "kvos/copy.h"

namespace kv::bench {
namespace {

struct Copy {
    std::string source;
    std::string target;
    std::uint64_t size;
};

void copyByBlocks(const Copy& copy) {
    // Its result says nothing of a size that is a whole number of blocks.
    kvOSCopyFile(copy.source.c_str(), copy.target.c_str(), 0);
}

void copyOnThreads(const Copy& copy) {
    constexpr std::uint32_t kBlockOf4MiB = 5;
    std::uint64_t bytes = copy.size;
    const std::uint32_t failed = kvOSCopyFileFast(copy.source.c_str(), copy.target.c_str(),
                                                  KVCOPY_COUNT_GIVEN | kBlockOf4MiB, &bytes, nullptr, nullptr);
    require(failed == 0 && bytes == copy.size, "a fast copy failed");
}

void copyByProgram(const Copy& copy) {
    unlink(copy.target.c_str());
    std::string program = "cp";
    std::string source = copy.source;
    std::string target = copy.target;
    char* arguments[] = {program.data(), source.data(), target.data(), nullptr};
    pid_t child = -1;
    int status = -1;
    require(posix_spawnp(&child, "cp", nullptr, nullptr, arguments, environ) == 0, "cp can't be run");
    require(waitpid(child, &status, 0) == child && status == 0, "cp failed");
}

#ifdef POSIX_FADV_DONTNEED
constexpr bool kCanForget = true;

/// The pages must be on the disk before the system drops them.
void forget(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    require(file >= 0, "a scratch file can't be opened");
    fdatasync(file);
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    close(file);
}
#else
constexpr bool kCanForget = false;
void forget(const std::string&) {}
#endif

using Way = void (*)(const Copy&);

void compareWays(Table& table, const std::string& what, const Copy& ours, const Copy& peers, Way way, bool cold) {
    const auto pass = [cold](const Copy& copy, Way copyIt) {
        return [&copy, copyIt, cold] {
            if (cold) forget(copy.source);
            copyIt(copy);
        };
    };
    table.compare({what + (cold ? ", cold" : ", warm"), "cp", bytesPerPass(ours.size), {}, Clock::wall},
                  pass(ours, way), pass(peers, copyByProgram));
}

void measureSize(Table& table, std::uint64_t size) {
    const ScratchFolder folder;
    const std::string source = folder.makeFile("source", size);
    const Copy ours{source, folder.path() + "/ours", size};
    const Copy peers{source, folder.path() + "/peers", size};
    for (const bool cold : {false, true}) {
        if (cold && !kCanForget) continue;
        compareWays(table, "kvOSCopyFile, " + sizeText(size), ours, peers, copyByBlocks, cold);
        compareWays(table, "kvOSCopyFileFast, " + sizeText(size), ours, peers, copyOnThreads, cold);
    }
}

}  // namespace

void measureFileCopies(const Scale& scale) {
    gdwOutputToStdDebug = 0;  // each fast copy warns of how its destination is shared
    {
        Table table("file_copies: local files", scale);
        measureSize(table, std::uint64_t{1} << 20);
        measureSize(table, std::uint64_t{64} << 20);
        if (!scale.quick) measureSize(table, std::uint64_t{4} << 30);
    }
    gdwOutputToStdDebug = 1;
}

}  // namespace kv::bench
