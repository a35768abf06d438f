// What belongs to a clip by its name, and how large the frames of its format can be.
#pragma once

#include "demo/clip.h"
#include "demo/report.h"

namespace demo {

void showNames(const Clip& clip, Report& report);

}  // namespace demo
