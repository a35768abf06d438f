// fopen of the test program: the system's, but for the source of random bytes once a test has asked.
#include "text/random_source.h"

#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <latch>
#include <optional>
#include <string_view>

#include "kvos/export.h"

namespace {

enum class Source { kWhole, kShort, kMissing };

Source source = Source::kWhole;
std::optional<std::latch> gathering;

}  // namespace

void kvtest::takeRandomSourceAway(bool isShort) { source = isShort ? Source::kShort : Source::kMissing; }

void kvtest::gatherAtRandomSource(int threads) { gathering.emplace(threads); }

KVUTIL_API FILE* fopen(const char* path, const char* mode) {
    static const auto systems = reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
    if (std::string_view(path) != "/dev/urandom") return systems(path, mode);
    if (gathering && !gathering->try_wait()) gathering->arrive_and_wait();
    switch (source) {
        case Source::kWhole:
            return systems(path, mode);
        case Source::kShort:
            return systems("/dev/null", mode);
        case Source::kMissing:
            break;
    }
    errno = ENOENT;
    return nullptr;
}
