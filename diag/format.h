// Messages from a printf format and its arguments.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace kv::diag {

/// What vsnprintf writes, at most `size` bytes with the terminator. Returns the length written. The common conversions
/// are made here, in a third of the time, and everything else by vsnprintf itself.
__attribute__((format(printf, 3, 0))) std::size_t formatMessage(char* out, std::size_t size, const char* format,
                                                                std::va_list arguments);

}  // namespace kv::diag
