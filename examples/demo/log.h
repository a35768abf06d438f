// A failing open in the log: in its list and in its file.
#pragma once

#include "demo/clip.h"
#include "demo/report.h"

namespace demo {

void showLog(const Clip& clip, Report& report);

}  // namespace demo
