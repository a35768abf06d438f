// The same clip as an object of a real store of the demonstration's own; nothing in a build without S3 support.
#pragma once

#include "demo/clip.h"
#include "demo/report.h"

namespace demo {

void showObjectStore(const Clip& clip, Report& report);

}  // namespace demo
