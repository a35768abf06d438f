// The names come from the library's naming calls; only the pattern and the first name are written here.
#include "demo/sequence.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <optional>
#include <random>

#include "demo/timed_file.h"
#include "kvos/find.h"
#include "kvos/naming.h"

namespace demo {
namespace {

constexpr std::uint32_t kDigits = 4;
constexpr const char* kPattern = "clip????.yuv";

using PathText = std::array<char, 4096>;

/// How the files of a sequence are called: what stands before the number, and how many digits it has.
struct Numbering {
    std::string example;  // a name with the extension that all of them have
    std::string beginning{};
    std::uint32_t digits = 0;

    std::string pathOf(std::uint32_t number) const {
        PathText path{};
        std::snprintf(path.data(), path.size(), "%s", beginning.c_str());
        MakeNumberedFileName(example.c_str(), path.data(), digits, static_cast<std::int32_t>(number));
        return path.data();
    }
};

Numbering numberingOf(const Clip& clip, const std::string& name) {
    Numbering numbering{.example = name};
    PathText base{};
    GetBaseName(name.c_str(), base.data(), &numbering.digits);
    numbering.beginning = clip.path(base.data());
    return numbering;
}

/// Lists what the pattern finds; the name of the first file.
std::optional<std::string> listFiles(const Clip& clip, Report& report) {
    kvOSFindData found{};
    Seconds time{};
    const std::string pattern = clip.path(kPattern);
    const std::int64_t find = timed(time, [&] { return kvOSFindFirstFile(pattern.c_str(), &found); });
    if (find == KVFIND_INVALID) {
        report.line("list " + std::string(kPattern), "nothing found", false);
        return std::nullopt;
    }
    const std::string first = found.szName;
    std::uint32_t files = 0;
    std::uint64_t bytes = 0;
    do {
        ++files;
        bytes += found.dwSizeLow;
    } while (timed(time, [&] { return kvOSFindNextFile(find, &found); }) != 0);
    kvOSFindClose(find);
    report.line("list " + std::string(kPattern), std::to_string(files) + " files, the first is " + first,
                files == clip.frames && bytes == clip.bytes());
    return first;
}

void countFiles(const Clip& clip, Report& report) {
    std::uint32_t first = 0;
    std::uint32_t digits = 0;
    const std::uint32_t behindLast = FindFilesNumber(clip.path(kPattern).c_str(), &first, &digits);
    const std::string told = "numbers " + std::to_string(first) + " to " + std::to_string(behindLast - 1) + ", " +
                             std::to_string(digits) + " digits";
    report.line("count them", told, first == 0 && behindLast == clip.frames && digits == kDigits);
}

void readFrames(const Clip& clip, const Numbering& numbering, const std::vector<std::uint32_t>& order,
                const std::string& what, Report& report) {
    Frame frame(clip.size.bytes());
    Seconds time{};
    std::uint32_t right = 0;
    for (const std::uint32_t number : order) {
        TimedFile file(numbering.pathOf(number), TimedFile::Use::read);
        if (file.isOpen() && file.size() == frame.size() && file.read(frame) && isFrame(number, frame)) ++right;
        file.close();
        time += file.takeTime();
    }
    report.line(what, clip.bytes(), time, countText(right, clip.frames), right == clip.frames);
}

}  // namespace

void writeSequence(const Clip& clip, Report& report) {
    const Numbering numbering{.example = "clip.yuv", .beginning = clip.path("clip"), .digits = kDigits};
    Frame frame(clip.size.bytes());
    Seconds time{};
    std::uint32_t written = 0;
    for (std::uint32_t number = 0; number < clip.frames; ++number) {
        drawFrame(number, frame);
        TimedFile file(numbering.pathOf(number), TimedFile::Use::write);
        const bool put = file.isOpen() && file.write(frame);
        if (file.close() && put) ++written;
        time += file.takeTime();
    }
    report.line("write " + std::to_string(clip.frames) + " files of one frame", clip.bytes(), time,
                std::to_string(written) + " files closed without loss", written == clip.frames);
}

void readSequence(const Clip& clip, Report& report) {
    const auto first = listFiles(clip, report);
    if (!first) return;
    countFiles(clip, report);
    const Numbering numbering = numberingOf(clip, *first);
    std::vector<std::uint32_t> order(clip.frames);
    std::iota(order.begin(), order.end(), 0u);
    readFrames(clip, numbering, order, "read in order", report);
    std::shuffle(order.begin(), order.end(), std::mt19937(kSeed));
    readFrames(clip, numbering, order, "read in random order", report);
}

}  // namespace demo
