#include "demo/clip.h"

namespace demo {

bool writeFrames(const Clip& clip, TimedFile& file) {
    Frame frame(clip.size.bytes());
    bool whole = file.isOpen();
    for (std::uint32_t number = 0; whole && number < clip.frames; ++number) {
        drawFrame(number, frame);
        whole = file.write(frame);
    }
    return file.close() && whole;
}

}  // namespace demo
