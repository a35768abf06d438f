// Sizes as kv ls prints them, seen on files that are mostly holes.
#include <cstdint>
#include <string>
#include <utility>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(HumanSize, UnitsAreThoseOf1024WithOneDecimal) {
    const std::pair<std::uint64_t, const char*> sizes[] = {
        {0, " 0 B "},
        {1, " 1 B "},
        {1023, " 1023 B "},
        {1024, " 1.0 KiB "},
        {1536, " 1.5 KiB "},
        {1048524, " 1023.9 KiB "},
        {1048525, " 1.0 MiB "},  // would read 1024.0 KiB
        {1048576, " 1.0 MiB "},
        {154825523, " 147.7 MiB "},
        {std::uint64_t{1} << 30, " 1.0 GiB "},
    };
    makeFile("clip");
    for (const auto& [bytes, text] : sizes) {
        std::filesystem::resize_file("clip", bytes);
        EXPECT_NE(runKv({"ls", "clip"}).out.find(text), std::string::npos) << bytes << " is not" << text;
    }
}

}  // namespace
