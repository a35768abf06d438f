// Messages on standard error: the texts carry their own line ends, or none.
#include "diag/standard_error.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "border/guard.h"
#include "border/relaxed.h"
#include "diag/format.h"
#include "errlog.h"

std::uint32_t gdwOutputToStdDebug = 1;

namespace kv::diag {

void toStandardError(const char* text) {
    if (border::relaxedLoad(gdwOutputToStdDebug) != 0) std::fputs(text, stderr);
}

}  // namespace kv::diag

std::uint32_t _DbgOut(const char* pFormat, ...) {
    const kv::border::KeepErrno keep;
    if (pFormat == nullptr) return 0;
    char text[1024];
    va_list arguments;
    va_start(arguments, pFormat);
    kv::diag::formatMessage(text, sizeof text, pFormat, arguments);
    va_end(arguments);
    kv::diag::toStandardError(text);
    return 0;
}

std::uint32_t _DbgOutString(std::uint64_t, const char* pText) {
    const kv::border::KeepErrno keep;
    if (pText != nullptr) kv::diag::toStandardError(pText);
    return 0;
}
