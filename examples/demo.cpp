// A clip written, read, copied and checked through one set of calls: as a local file, as a file in memory, as a
// numbered sequence of files, on a web server and in an object store; what belongs to it, the log and the settings.
// Ends with 1 if anything came back other than it was written.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "demo/clip.h"
#include "demo/log.h"
#include "demo/names.h"
#include "demo/network.h"
#include "demo/object_store.h"
#include "demo/report.h"
#include "demo/sequence.h"
#include "demo/settings.h"
#include "demo/timed_file.h"

namespace demo {
namespace {

using Use = TimedFile::Use;

// ---- the steps ---------------------------------------------------------------------------------------------------

void writeClip(const Clip& clip, Report& report) {
    TimedFile file(clip.path("clip.yuv"), Use::write);
    const bool whole = writeFrames(clip, file);
    const Seconds time = file.takeTime();
    report.line("write clip.yuv", clip.bytes(), time, whole ? "closed without loss" : "bytes were lost", whole);
}

/// Reads every frame, from where the file stands to its end, and sees that nothing comes after the last.
void readInOrder(const Clip& clip, TimedFile& file, const std::string& what, Report& report) {
    Frame frame(clip.size.bytes());
    std::uint32_t right = 0;
    for (std::uint32_t number = 0; number < clip.frames; ++number) {
        if (file.read(frame) && isFrame(number, frame)) ++right;
    }
    const bool ended = file.readSome(frame) == 0 && file.size() == clip.bytes();
    report.line(what, clip.bytes(), file.takeTime(), countText(right, clip.frames), right == clip.frames && ended);
}

void readAtRandom(const Clip& clip, TimedFile& file, const std::string& what, Report& report) {
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<std::uint32_t> anyFrame(0, clip.frames - 1);
    Frame frame(clip.size.bytes());
    std::uint32_t right = 0;
    for (std::uint32_t seeks = 0; seeks < clip.frames; ++seeks) {
        const std::uint32_t number = anyFrame(random);
        if (file.seek(number * std::uint64_t{frame.size()}) && file.read(frame) && isFrame(number, frame)) ++right;
    }
    report.line(what, clip.bytes(), file.takeTime(), countText(right, clip.frames), right == clip.frames);
}

/// Copies from the beginning in blocks that have nothing to do with frames.
void copy(const Clip& clip, TimedFile& from, TimedFile& to, const std::string& what, Report& report) {
    Frame block(std::size_t{4} << 20);
    bool whole = from.seek(0);
    std::uint64_t copied = 0;
    for (std::size_t got = 0; whole && (got = from.readSome(block)) > 0; copied += got) {
        whole = to.write(std::span(block).first(got));
    }
    report.line(what, copied, from.takeTime() + to.takeTime(), whole ? "all bytes taken" : "bytes were lost",
                whole && copied == clip.bytes());
}

void checkCopy(const Clip& clip, const std::string& name, Report& report) {
    TimedFile file(clip.path(name), Use::read);
    readInOrder(clip, file, "read " + name, report);
}

// ---- the parts ---------------------------------------------------------------------------------------------------

void showLocal(const Clip& clip, Report& report) {
    report.heading("Local files");
    writeClip(clip, report);
    writeSequence(clip, report);
    TimedFile file(clip.path("clip.yuv"), Use::read);
    readInOrder(clip, file, "read in order", report);
    readAtRandom(clip, file, "seek to random frames and read", report);
}

void showMemory(const Clip& clip, Report& report) {
    report.heading("A file in memory, mem://clip");
    TimedFile memory("mem://clip", Use::readAndWrite);
    {
        TimedFile local(clip.path("clip.yuv"), Use::read);
        copy(clip, local, memory, "copy clip.yuv into it", report);
    }
    memory.seek(0);
    readInOrder(clip, memory, "read in order", report);
    readAtRandom(clip, memory, "seek to random frames and read", report);

    TimedFile local(clip.path("copy.yuv"), Use::write);
    const bool attached = local.attachOutput(clip.path("second.yuv"));
    report.line("attach second.yuv to copy.yuv", attached ? "attached" : "refused", attached);
    copy(clip, memory, local, "copy it to copy.yuv and its output", report);
    const bool closed = local.close();
    report.line("close both", closed ? "closed without loss" : "bytes were lost", closed);
    checkCopy(clip, "copy.yuv", report);
    checkCopy(clip, "second.yuv", report);
}

void showSequence(const Clip& clip, Report& report) {
    report.heading("A numbered sequence, one file a frame");
    readSequence(clip, report);
}

// ---- arguments and the folder ------------------------------------------------------------------------------------

constexpr const char* kUsage =
    "usage: kvutil_demo [--frames N] [--frame-size WxH] [--folder DIR]\n"
    "  N 1 to 9999, W and H even; with --folder the files stay there, otherwise they are removed.\n";

bool parseSize(const char* text, FrameSize& size) {
    unsigned width = 0;
    unsigned height = 0;
    char behind = '\0';
    if (std::sscanf(text, "%5ux%5u%c", &width, &height, &behind) != 2) return false;
    size = {width, height};
    return width >= 16 && height >= 16 && width <= 16384 && height <= 16384 && width % 2 == 0 && height % 2 == 0;
}

bool parseFrames(const char* text, std::uint32_t& frames) {
    char behind = '\0';
    return std::sscanf(text, "%5u%c", &frames, &behind) == 1 && frames >= 1 && frames <= 9999;
}

std::optional<Clip> parse(int argc, char** argv) {
    Clip clip;
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 == argc) return std::nullopt;
        const std::string_view option = argv[i];
        const bool known = (option == "--frames" && parseFrames(argv[i + 1], clip.frames)) ||
                           (option == "--frame-size" && parseSize(argv[i + 1], clip.size)) ||
                           (option == "--folder" && !(clip.folder = argv[i + 1]).empty());
        if (!known) return std::nullopt;
    }
    return clip;
}

/// A folder of the demonstration's own, gone with all it holds at the end.
class OwnFolder {
public:
    OwnFolder() : path_((std::filesystem::temp_directory_path() / "kvutil-demo-XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr) throw std::filesystem::filesystem_error(path_, std::error_code());
    }
    ~OwnFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

int run(Clip clip) {
    std::optional<OwnFolder> own;
    if (clip.folder.empty()) clip.folder = own.emplace().path();

    std::printf("%u frames of %zux%zu, %zu bytes each, in %s\n", clip.frames, clip.size.width, clip.size.height,
                clip.size.bytes(), clip.folder.c_str());
    std::printf(
        "Times are those of the library's calls; drawing and checking frames is not in them. What is read was\n"
        "just written, so it mostly comes from the system's cache. Random orders have the seed %u.\n",
        kSeed);
    Report report;
    showLocal(clip, report);
    showMemory(clip, report);
    showSequence(clip, report);
    showNames(clip, report);
    showNetwork(clip, report);
    showObjectStore(clip, report);
    showLog(clip, report);
    showSettings(clip, report);
    return report.conclude();
}

}  // namespace
}  // namespace demo

int main(int argc, char** argv) {
    try {
        const auto clip = demo::parse(argc, argv);
        if (clip) return demo::run(*clip);
        std::fputs(demo::kUsage, stderr);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvutil_demo: %s\n", error.what());
        return 1;
    }
}
