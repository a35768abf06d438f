#include "demo/names.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fourcc.h>
#include <kvos.h>
#include <string>

namespace demo {
namespace {

void makeEmptyFile(const std::string& path) {
    const std::int64_t file = kvOSCreateFile(path.c_str(), KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_ALWAYS, 0, 0);
    if (file != KVFILE_INVALID) kvOSCloseFile(file);
}

void findSound(const Clip& clip, Report& report) {
    std::array<char, 4096> base{};
    const std::uint32_t found = FindAudioForVideo(clip.path("take.mov").c_str(), ".wav", base.data());
    const bool right = found == KVAUDIO_NUMBERED && clip.path("take") == base.data();
    report.line("look for the sound of take.mov", right ? "take_1.wav and take_2.wav" : "not what is there", right);
}

void chooseExtension(const Clip& clip, Report& report) {
    std::array<char, 4096> path{};
    std::array<char, 4096> extensions{};
    clip.path("take.mxf").copy(path.data(), path.size() - 1);
    FindFileExtensions(path.data(), extensions.data());
    ChooseVideoExtension(path.data(), extensions.data());
    const bool right = clip.path("take.mov") == path.data();
    report.line("choose what stands for take.mxf", std::filesystem::path(path.data()).filename().string(), right);
}

void tellFrameSize(const Clip& clip, Report& report) {
    const auto width = static_cast<std::uint32_t>(clip.size.width);
    const auto height = static_cast<std::uint32_t>(clip.size.height);
    const std::uint32_t code = KVFCC('U', 'Y', 'V', 'Y');
    const std::uint32_t bytes = fccGetMaxFrameSize(code, width, height, 16, 25);
    const bool right = fccIsVideo(code) != 0 && bytes == 2 * width * height;
    report.line("ask for the largest frame of UYVY", std::to_string(bytes) + " bytes", right);
}

}  // namespace

void showNames(const Clip& clip, Report& report) {
    report.headingWithoutTransfers("What belongs to a clip");
    const std::filesystem::path folder = std::filesystem::path(clip.path("take.mov")).parent_path();
    for (const char* name : {"take.mov", "take_1.wav", "take_2.wav"}) makeEmptyFile((folder / name).string());
    findSound(clip, report);
    chooseExtension(clip, report);
    tellFrameSize(clip, report);
}

}  // namespace demo
