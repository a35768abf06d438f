// The calls of the system's frameworks, from their own headers where those are, and otherwise declared here: the
// headers that scripts/check-macos compiles with have the system's calls, but no frameworks. That script knows the
// names of the calls as well.
#pragma once

#if __has_include(<CoreServices/CoreServices.h>) && __has_include(<IOKit/IOKitLib.h>)

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>
#include <IOKit/IOKitLib.h>

#else

#include <MacTypes.h>
#include <cstdint>
#include <mach/mach.h>

extern "C" {

using AbsoluteTime = UnsignedWide;
using Nanoseconds = UnsignedWide;

Nanoseconds AbsoluteToNanoseconds(AbsoluteTime absoluteTime);

using CFTypeRef = const void*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFStringRef = const struct __CFString*;
using CFNumberRef = const struct __CFNumber*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;
using CFTypeID = unsigned long;
using CFNumberType = long;
using CFStringEncoding = std::uint32_t;
using io_object_t = mach_port_t;

inline constexpr CFNumberType kCFNumberSInt64Type = 4;
inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

extern const CFAllocatorRef kCFAllocatorDefault;

void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFDictionaryGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text, CFStringEncoding encoding);
unsigned char CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CFMutableDictionaryRef IOServiceMatching(const char* name);
kern_return_t IOServiceGetMatchingServices(mach_port_t port, CFDictionaryRef matching, io_object_t* iterator);
io_object_t IOIteratorNext(io_object_t iterator);
kern_return_t IORegistryEntryCreateCFProperties(io_object_t entry, CFMutableDictionaryRef* properties,
                                                CFAllocatorRef allocator, std::uint32_t options);
kern_return_t IOObjectRelease(io_object_t object);
}

#endif
