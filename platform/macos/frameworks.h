// The calls of the system's frameworks, from their own headers where those are, and otherwise declared here: the
// headers that scripts/check-macos compiles with have the system's calls, but no frameworks.
#pragma once

#if __has_include(<CoreServices/CoreServices.h>)
#include <CoreServices/CoreServices.h>
#else
#include <MacTypes.h>

extern "C" {
using AbsoluteTime = UnsignedWide;
using Nanoseconds = UnsignedWide;
Nanoseconds AbsoluteToNanoseconds(AbsoluteTime absoluteTime);
}
#endif
