// Listing a large folder with all that an entry tells, beside glob and a stat of each path.
//
// The peer leaves out the sizes and times that ours converts, and "." and "..", which only ours delivers.
#include <glob.h>
#include <string>
#include <sys/stat.h>

#include "bench/scratch.h"
#include "bench/topics.h"
#include "kvos/find.h"

namespace kv::bench {
namespace {

int listByFind(const std::string& pattern) {
    kvOSFindData data;
    const std::int64_t find = kvOSFindFirstFile(pattern.c_str(), &data);
    require(find != KVFIND_INVALID, "the folder can't be listed");
    int count = 1;
    while (kvOSFindNextFile(find, &data) != 0) ++count;
    kvOSFindClose(find);
    return count;
}

int listByGlob(const std::string& pattern) {
    glob_t paths{};
    require(glob(pattern.c_str(), 0, nullptr, &paths) == 0, "the folder can't be listed");
    int count = 0;
    for (std::size_t i = 0; i < paths.gl_pathc; ++i) {
        struct stat facts;
        count += stat(paths.gl_pathv[i], &facts) == 0 ? 1 : 0;
    }
    globfree(&paths);
    return count;
}

}  // namespace

void measureEnumeration(const Scale& scale) {
    const int files = scale.quick ? 10000 : 100000;
    const ScratchFolder folder;
    folder.makeFrames(files);
    const std::string pattern = folder.path() + "/*";
    Table table("enumeration: a folder of " + std::to_string(files) + " files", scale);
    table.compare(
        {"kvOSFindFirstFile and kvOSFindNextFile, an entry", "glob and stat",
         callsPerPass(static_cast<std::uint64_t>(files))},
        [&] { require(listByFind(pattern) == files + 2, "entries are missing"); },
        [&] { require(listByGlob(pattern) == files, "paths are missing"); });
}

}  // namespace kv::bench
