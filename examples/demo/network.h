// The same clip on a web server of the demonstration's own, and as a playlist of two pieces.
#pragma once

#include "demo/clip.h"
#include "demo/report.h"

namespace demo {

void showNetwork(const Clip& clip, Report& report);

}  // namespace demo
