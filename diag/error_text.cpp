// What a 32-bit error code says: class, module, area and operation, each a label from a table.
//
// The text is composed aside and stored byte by byte, relaxed: two threads may see each other's text in szWin, which is
// the contract, but never a text without an end.
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "border/text.h"
#include "errlog.h"

char szWin[1024];

namespace kv::diag {
namespace {

constexpr std::uint32_t kStructured = 0x20000000;
constexpr std::uint32_t kModuleMask = 0x0FFF0000;
constexpr std::uint32_t kAreaMask = 0x0000F000;
constexpr std::uint32_t kOperationMask = 0x00000FFF;

// The error label has no colon, the three others have one. Meant.
constexpr std::array<const char*, 4> kClassLabels{"SUCCESS: ", "INFO: ", "WARNING: ", "ERROR "};

struct ModuleLabel {
    std::uint32_t module;  // the code under kModuleMask
    const char* label;
};

constexpr std::array<ModuleLabel, 10> kModuleLabels{{
    {0x08010000, "[AvHal] "},
    {0x08020000, "[MediaFile] "},
    {0x08030000, "[ZMW] "},
    {0x08040000, "[zmwExt] "},
    {0x08050000, "[zmwInt] "},
    {0x08060000, "[zmwNet] "},
    {0x08070000, "[zmwCtl] "},
    {0x08100000, "[Mem] "},
    {0x08110000, "[MediaBase] "},
    {0x0FFF0000, "[Korvane] "},
}};

// By the value of the area field; the areas without a name of their own are null.
constexpr std::array<const char*, 16> kAreaLabels{
    "Handle->", "Channel->", "Memory->", "File->", "Read->", "Write->", "Hardware->", "MediaCmd->",
    "DFrame->", nullptr,     nullptr,    nullptr,  nullptr,  nullptr,   "Internal->", "Software->",
};

// By the value of the operation field.
constexpr std::array kOperationLabels{
    "DList ",
    "Doesn't Exist ",
    "Unknown ",
    "Is Invalid ",
    "Is Bad ",
    "Is Null ",
    "Bad Selection ",
    "Local ",
    "Global ",
    "Shared ",
    "Is Free ",
    "Is Too Small ",
    "Opening ",
    "End ",
    "Reading ",
    "Writing ",
    "Closing ",
    "Not Found ",
    "No Open ",
    "Param ",
    "Param1 ",
    "Param2 ",
    "Param3 ",
    "Param4 ",
    "Param5 ",
    "Indirection ",
    "Add ",
    "Delete ",
    "Find ",
    "Callback ",
    "File Exists ",
    "Is Locked ",
    "No Allocation Available ",
    "Caused An Exception ",
};
static_assert(kOperationLabels.size() == 34);

using CodeText = char[sizeof szWin];

void appendModule(CodeText& text, std::uint32_t module) {
    for (const ModuleLabel& known : kModuleLabels) {
        if (known.module != module) continue;
        border::appendText(text, sizeof text, known.label);
        return;
    }
    char unknown[32];
    std::snprintf(unknown, sizeof unknown, "[Unknown 0x%08lX] ", static_cast<unsigned long>(module));
    border::appendText(text, sizeof text, unknown);
}

void appendArea(CodeText& text, std::uint32_t code) {
    const char* label = kAreaLabels[(code & kAreaMask) >> 12];
    char unknown[32];
    if (label == nullptr) {
        std::snprintf(unknown, sizeof unknown, "Unknown0x%08X->", code & kAreaMask);
        label = unknown;
    }
    border::appendText(text, sizeof text, label);
}

void appendOperation(CodeText& text, std::uint32_t code) {
    const std::uint32_t operation = code & kOperationMask;
    char outOfRange[32];
    const char* label = nullptr;
    if (operation < kOperationLabels.size()) {
        label = kOperationLabels[operation];
    } else {
        // The area bits show in it too. Meant.
        std::snprintf(outOfRange, sizeof outOfRange, "OutOfRange0x%08X->", code & (kAreaMask | kOperationMask));
        label = outOfRange;
    }
    border::appendText(text, sizeof text, label);
}

void composeCodeText(CodeText& text, std::uint32_t code) {
    if (code == KVERR_NONE) {
        border::copyText(text, sizeof text, " ");
        return;
    }
    if (code == 0) code = static_cast<std::uint32_t>(errno);
    if ((code & kStructured) == 0) {
        std::snprintf(text, sizeof text, "ERR:%d (0x%08X) ", static_cast<std::int32_t>(code), code);
        return;
    }
    border::copyText(text, sizeof text, kClassLabels[code >> 30]);
    appendModule(text, code & kModuleMask);
    appendArea(text, code);
    appendOperation(text, code);
}

}  // namespace
}  // namespace kv::diag

char* FormatWinMsg(std::uint32_t dwCode) {
    kv::diag::CodeText text = "";
    kv::diag::composeCodeText(text, dwCode);
    const std::string_view composed(text);
    for (std::size_t i = 0; i <= composed.size(); ++i) kv::border::relaxedStore(szWin[i], text[i]);
    return szWin;
}
