// A setting changed and saved, its file damaged, and the setting recovered.
#pragma once

#include "demo/clip.h"
#include "demo/report.h"

namespace demo {

void showSettings(const Clip& clip, Report& report);

}  // namespace demo
