// The frames of the demonstration: noise that follows from a frame's number, so that any byte in a wrong place shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace demo {

using Frame = std::vector<std::byte>;

/// A picture of 8 bits a sample, with one pair of colour samples for four of brightness.
struct FrameSize {
    std::size_t width = 1920;
    std::size_t height = 1080;

    std::size_t bytes() const { return width * height + width * height / 2; }
};

/// Fills the frame with what its number calls for. Its first eight bytes are the number itself.
void drawFrame(std::uint64_t number, std::span<std::byte> frame);

/// Whether every byte is what drawFrame puts there.
bool isFrame(std::uint64_t number, std::span<const std::byte> frame);

}  // namespace demo
