// The clip as a numbered sequence of files, one frame in each.
#pragma once

#include "demo/clip.h"
#include "demo/report.h"

namespace demo {

/// Writes clip0000.yuv, clip0001.yuv and so on.
void writeSequence(const Clip& clip, Report& report);

/// Finds the sequence by a pattern, as an application would that is given no more than that, and reads it.
void readSequence(const Clip& clip, Report& report);

}  // namespace demo
