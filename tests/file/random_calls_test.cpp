// Thousands of random calls on local and memory files against a model that is nothing but a string and a position.
#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "file/owned_file.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

constexpr int kSteps = 20000;
constexpr std::uint64_t kLargest = 3 << 20;  // keeps the model's string small

/// What a file is: bytes and a position. Both kinds answer like this wherever they agree.
struct Model {
    std::string bytes;
    std::uint64_t position = 0;

    std::string read(std::uint64_t count) {
        if (position >= bytes.size()) return {};
        std::string got = bytes.substr(position, count);
        position += got.size();
        return got;
    }
    void write(const std::string& text) {
        if (position + text.size() > bytes.size()) bytes.resize(position + text.size());
        bytes.replace(position, text.size(), text);
        position += text.size();
    }
};

class RandomCalls : public ::testing::TestWithParam<std::tuple<const char*, unsigned>> {
protected:
    std::uint64_t upTo(std::uint64_t limit) { return std::uniform_int_distribution<std::uint64_t>(0, limit)(random_); }

    std::string someText() {
        static constexpr std::uint64_t kSizes[] = {0, 1, 15, 16, 17, 4095, 4096, 4097, 70000};
        std::string text(upTo(kSizes[upTo(8)]), '\0');
        for (char& letter : text) letter = static_cast<char>(random_());
        return text;
    }

    /// A target inside the file, so that both kinds take it.
    std::int64_t inside() { return static_cast<std::int64_t>(upTo(model_.bytes.size())); }

    void step(const OwnedFile& file) {
        const std::int64_t handle = file.handle();
        switch (upTo(9)) {
            case 0:
            case 1:
            case 2: {
                const auto count = static_cast<std::uint32_t>(upTo(100000));
                ASSERT_TRUE(readSome(file, count) == model_.read(count));
                break;
            }
            case 3:
            case 4:
            case 5: {
                if (model_.position > kLargest) break;
                const std::string text = someText();
                writeAll(file, text);
                model_.write(text);
                break;
            }
            case 6: {
                const std::int64_t target = inside();
                ASSERT_EQ(kvOSSeek(handle, target), target);
                model_.position = static_cast<std::uint64_t>(target);
                break;
            }
            case 7: {
                std::int64_t position = 0;
                const std::int64_t target = inside();
                ASSERT_EQ(kvOSSetFilePointerEx(handle, target - kvOSTell(handle), &position, 1), 1u);
                ASSERT_EQ(position, target);
                model_.position = static_cast<std::uint64_t>(target);
                break;
            }
            case 8:
                if (upTo(20) == 0 && model_.position < model_.bytes.size()) {
                    ASSERT_EQ(kvOSSetEndOfFile(handle), 1u);
                    model_.bytes.resize(model_.position);
                }
                break;
            default: {
                std::uint64_t size = 0;
                kvOSGetFileSizeEx(handle, &size);
                ASSERT_EQ(size, model_.bytes.size());
                ASSERT_EQ(kvOSTell(handle), static_cast<std::int64_t>(model_.position));
                break;
            }
        }
    }

    ScratchFolder folder_;
    std::mt19937_64 random_{std::get<1>(GetParam())};
    Model model_;
};

}  // namespace

TEST_P(RandomCalls, AgreeWithTheModel) {
    const auto [kind, seed] = GetParam();
    SCOPED_TRACE("seed " + std::to_string(seed));
    OwnedFile file = openNew(std::string(kind) == "memory" ? "mem://model" : folder_ / "model");
    ASSERT_TRUE(file.isOpen());
    for (int i = 0; i < kSteps; ++i) {
        SCOPED_TRACE("step " + std::to_string(i));
        step(file);
        if (HasFatalFailure()) return;
    }
    ASSERT_TRUE(readAll(file) == model_.bytes);
    file.close();
    if (std::string(kind) == "local") {
        EXPECT_TRUE(contentOf(folder_ / "model") == model_.bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCalls,
                         ::testing::Combine(::testing::Values("local", "memory"),
                                            ::testing::Values(1u, 2u, 3u, 20261121u)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param)) + std::to_string(std::get<1>(row.param));
                         });
