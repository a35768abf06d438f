// Which sanitizers the tests are built with, for those few tests that one of them leaves no room for.
//
// g++ says it by macros, clang++ by features; nothing else in the tests asks. Prefer GTEST_SKIP with the reason over
// leaving a test out.
#pragma once

namespace kvtest {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
#else
inline constexpr bool kAddressSanitizer = false;
#endif

#if defined(__SANITIZE_THREAD__)
inline constexpr bool kThreadSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool kThreadSanitizer = __has_feature(thread_sanitizer);
#else
inline constexpr bool kThreadSanitizer = false;
#endif

}  // namespace kvtest
