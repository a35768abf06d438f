// kvutil_bench [--quick] [TOPIC...]: measures the named topics, all of them unless some are named.
#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <vector>

#include "bench/topics.h"

namespace {

struct Topic {
    std::string_view name;
    void (*measure)(const kv::bench::Scale&);
};

constexpr std::array kTopics{
    Topic{"local_reads", kv::bench::measureLocalReads},
    Topic{"memory_files", kv::bench::measureMemoryFiles},
    Topic{"copies", kv::bench::measureCopies},
    Topic{"enumeration", kv::bench::measureEnumeration},
    Topic{"file_copies", kv::bench::measureFileCopies},
    Topic{"open_close", kv::bench::measureOpenClose},
    Topic{"reports", kv::bench::measureReports},
    Topic{"settings", kv::bench::measureSettings},
    Topic{"events", kv::bench::measureEvents},
    Topic{"threaded_copy", kv::bench::measureThreadedCopy},
    Topic{"urls", kv::bench::measureUrls},
    Topic{"objects", kv::bench::measureObjects},
    Topic{"fourcc", kv::bench::measureFourCCs},
};

int printUsage() {
    std::fprintf(stderr, "kvutil_bench [--quick] [TOPIC...], topics being:\n");
    for (const Topic& topic : kTopics) {
        std::fprintf(stderr, "  %.*s\n", static_cast<int>(topic.name.size()), topic.name.data());
    }
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    kv::bench::Scale scale;
    std::vector<Topic> chosen;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--quick") {
            scale.quick = true;
            continue;
        }
        const auto* const topic = std::ranges::find(kTopics, argument, &Topic::name);
        if (topic == kTopics.end()) return printUsage();
        chosen.push_back(*topic);
    }
    if (chosen.empty()) chosen.assign(kTopics.begin(), kTopics.end());
    for (const Topic& topic : chosen) topic.measure(scale);
}
