// The front door of messages: one line of text is composed, handed to the log and copied to standard error.
//
// No call here fails or disturbs its caller: errno is as it was when the call returns. A text of 4097 bytes
// or more goes to standard error whole and is not logged; of a shorter one, what the layout adds may be cut at the end
// of the composition buffer.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "border/guard.h"
#include "border/relaxed.h"
#include "diag/format.h"
#include "diag/log_results.h"
#include "diag/settings_once.h"
#include "diag/standard_error.h"
#include "errlog.h"

namespace kv::diag {
namespace {

using border::relaxedLoad;

constexpr std::size_t kComposedSize = 4097;
using Composed = char[kComposedSize];

struct SourcePosition {
    const char* file;
    std::int32_t line;

    bool given() const { return file != nullptr && line != 0; }
};

/// A text too long to be composed goes to standard error as it is, and is not logged.
bool wentOutWhole(const char* text) {
    if (text == nullptr || strnlen(text, kComposedSize) < kComposedSize) return false;
    toStandardError(text);
    return true;
}

const char* orDefault(const char* text) { return text == nullptr ? "No error supplied" : text; }

/// The code's text, copied out of the buffer that all threads share.
struct CodeText {
    char text[sizeof szWin];

    explicit CodeText(std::uint32_t code) {
        char* shared = FormatWinMsg(code);
        std::size_t i = 0;
        for (; i < sizeof text - 1; ++i) {
            text[i] = relaxedLoad(shared[i]);
            if (text[i] == '\0') return;
        }
        text[i] = '\0';
    }
};

void composeLine(Composed& out, std::uint32_t code, const char* text, SourcePosition source) {
    const CodeText codeText(code);
    const auto number = static_cast<std::int32_t>(code);
    if (source.given()) {
        std::snprintf(out, sizeof out, "\n%s(%d) : %s  %d [0x%08X] %s  ", source.file, source.line, orDefault(text),
                      number, code, codeText.text);
    } else {
        std::snprintf(out, sizeof out, "%s  %d [0x%08X] {%s}  ", orDefault(text), number, code, codeText.text);
    }
}

/// The multi-line layout. KVERR_NONE stands for the absence of a code, and no code text is made for it.
void composeBox(Composed& out, std::uint32_t code, const char* text, SourcePosition source) {
    if (code == KVERR_NONE) {
        if (source.given()) {
            std::snprintf(out, sizeof out, "%s\n%s @ line %d", orDefault(text), source.file, source.line);
        } else {
            std::snprintf(out, sizeof out, "%s", orDefault(text));
        }
        return;
    }
    const CodeText codeText(code);
    const auto number = static_cast<std::int32_t>(code);
    if (source.given()) {
        std::snprintf(out, sizeof out, "%s\n%d [0x%08X]\n%s\n%s @ line %d", orDefault(text), number, code,
                      codeText.text, source.file, source.line);
    } else {
        std::snprintf(out, sizeof out, "%s\n%d [0x%08X]\n%s", orDefault(text), number, code, codeText.text);
    }
}

/// Logs a finished text and copies it to standard error as the log's answer tells.
void deliver(std::uint32_t code, const char* text) {
    const std::uint32_t outcome = ErrLogPut(code, text);
    if (outcome == kLogSwallowed) return;
    if (outcome != kLogStored && outcome != kLogFailed) {
        char repeat[32];
        std::snprintf(repeat, sizeof repeat, "[repeat x%i]\n", static_cast<int>(outcome));
        toStandardError(repeat);
    }
    toStandardError(text);
}

}  // namespace
}  // namespace kv::diag

namespace diag = kv::diag;
using kv::border::KeepErrno;
using kv::border::relaxedLoad;

std::uint32_t ErrMsg(std::uint32_t dwCode, const char* pText, std::uint64_t qwReserved1, std::uint64_t qwReserved2,
                     const char* pFile, std::int32_t nLine) {
    {
        const KeepErrno keep;  // code 0 asks for the caller's errno, not for that of reading settings
        diag::readSettingsOnce();
    }
    const bool isError = dwCode >> 30 == 3;
    if (isError && relaxedLoad(gfShowErrors) != 0 && relaxedLoad(gfUseErrorBox) == 1) {
        return ErrMsgBox(dwCode, pText, qwReserved1, qwReserved2, pFile, nLine);
    }
    return ErrMsgOut(dwCode, pText, qwReserved1, qwReserved2, pFile, nLine);
}

std::uint32_t ErrMsgOut(std::uint32_t dwCode, const char* pText, std::uint64_t qwReserved1, std::uint64_t qwReserved2,
                        const char* pFile, std::int32_t nLine) {
    const KeepErrno keep;
    if (diag::wentOutWhole(pText)) return 0;
    if (relaxedLoad(gfMKTestActive) != 0 || relaxedLoad(gf2MKActive) != 0) {
        return ErrMsgBox(dwCode, pText, qwReserved1, qwReserved2, pFile, nLine);
    }
    diag::Composed line;
    diag::composeLine(line, dwCode, pText, {pFile, nLine});
    diag::deliver(dwCode, line);
    return 0;
}

std::uint32_t ErrMsgBox(std::uint32_t dwCode, const char* pText, std::uint64_t, std::uint64_t, const char* pFile,
                        std::int32_t nLine) {
    const KeepErrno keep;
    if (diag::wentOutWhole(pText)) return 0;
    diag::Composed box;
    diag::composeBox(box, dwCode, pText, {pFile, nLine});
    diag::deliver(dwCode, box);
    return 0;
}

std::uint32_t ErrMsgDbg(std::uint32_t dwCode, const char* pText, std::uint64_t, std::uint64_t, const char* pFile,
                        std::int32_t nLine) {
    const KeepErrno keep;
    if (diag::wentOutWhole(pText)) return 0;
    diag::Composed line;
    diag::composeLine(line, dwCode, pText, {pFile, nLine});
    diag::toStandardError(line);
    return 0;
}

std::uint32_t ErrStrOut(std::uint32_t dwCode, const char* pText, const char* pFile, std::int32_t nLine) {
    const KeepErrno keep;
    if (pText == nullptr) return 0xFFFFFFFF;
    if (diag::wentOutWhole(pText)) return 0;
    const diag::SourcePosition source{pFile, nLine};
    if (!source.given()) {
        diag::deliver(dwCode, pText);
        return 0;
    }
    diag::Composed line;
    std::snprintf(line, sizeof line, "\n%s(%d) : %s  ", pFile, nLine, pText);
    diag::deliver(dwCode, line);
    return 0;
}

std::uint32_t ErrFmtOut(std::uint32_t dwCode, const char* pFile, std::int32_t nLine, const char* pFormat, ...) {
    const KeepErrno keep;
    if (pFormat == nullptr) return 0;
    char text[4097];
    va_list arguments;
    va_start(arguments, pFormat);
    diag::formatMessage(text, 4096, pFormat, arguments);
    va_end(arguments);
    ErrStrOut(dwCode, text, pFile, nLine);
    return 0;
}

std::uint32_t ErrOut(const char* pFormat, ...) {
    const KeepErrno keep;
    if (pFormat == nullptr) return 0;
    char text[4096];
    va_list arguments;
    va_start(arguments, pFormat);
    diag::formatMessage(text, sizeof text, pFormat, arguments);
    va_end(arguments);
    diag::deliver(0, text);
    return 0;
}
