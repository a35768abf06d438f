// What the demonstration works on: a number of frames of one size, in one folder.
#pragma once

#include <cstdint>
#include <string>

#include "demo/frames.h"
#include "demo/timed_file.h"

namespace demo {

struct Clip {
    std::uint32_t frames = 60;
    FrameSize size;
    std::string folder;

    std::uint64_t bytes() const { return std::uint64_t{frames} * size.bytes(); }
    std::string path(const std::string& name) const { return folder + "/" + name; }
};

/// Seed of every random order, so that a run can be repeated.
inline constexpr std::uint32_t kSeed = 20261121;

/// "60 of 60 frames right"
inline std::string countText(std::uint32_t right, std::uint32_t all) {
    return std::to_string(right) + " of " + std::to_string(all) + " frames right";
}

/// Draws every frame of the clip and writes it, from the file's beginning; closes the file. Whether all has arrived.
bool writeFrames(const Clip& clip, TimedFile& file);

}  // namespace demo
