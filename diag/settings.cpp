// The switches of the reporting calls, and their reading from the settings.
//
// The reading opens the default store, may save it, and so may report in its turn: whoever calls it sets gfReadReg
// first and holds no lock of the log.
#include <array>
#include <cstdint>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "border/setting.h"
#include "border/text.h"
#include "errlog.h"
#include "kvcfg.h"

std::uint32_t gfReadReg = 0;
std::uint32_t gfShowInfomational = 0;
std::uint32_t gfShowWarnings = 0;
std::uint32_t gfShowErrors = 1;
std::uint32_t gfUseErrorBox = 0;
std::uint32_t gfMKTestActive = 0;
std::uint32_t gf2MKActive = 0;
std::uint32_t gfNotifyMKOutput = 0;
std::uint32_t gfUseErrorWin = 0;
std::uint32_t gdwDebugLevel = 0;
std::uint32_t gfEnableLog = 0;
std::uint32_t gfEnableList = 1;
char szLogName[4096];
char gszLogName[4096];

namespace kv::diag {
namespace {

using border::relaxedLoad;
using border::relaxedStore;

constexpr const char* kDebugKey = "ZMW\\Advanced\\Debug";
constexpr const char* kServerKey = "ZMW\\NetServer\\HttpDirs";
constexpr const char* kLogName = "DefaultLogName";
constexpr std::string_view kLogInServer = "/debugout.log";
constexpr std::size_t kShortestLogName = 3;

struct Switch {
    const char* name;
    std::uint32_t& variable;
};

// In the order of reading, which is the order of the elements in a file that had none of them.
constexpr std::array kSwitches{
    Switch{"ShowInformational", gfShowInfomational},
    Switch{"ShowWarnings", gfShowWarnings},
    Switch{"ShowErrors", gfShowErrors},
    Switch{"UseErrorBox", gfUseErrorBox},
    Switch{"MKTestActive", gfMKTestActive},
    Switch{"UseWindow", gfUseErrorWin},
    Switch{"DebugLevel", gdwDebugLevel},
    Switch{"EnableLog", gfEnableLog},
    Switch{"EnableList", gfEnableList},
};

/// Only what is missing is brought to 0 or 1: a stored 5 stays 5. Meant.
void readSwitch(const Switch& one) {
    std::uint32_t value = relaxedLoad(one.variable);
    const bool isStored = kvCFGValueDword(KVSTDCONFIG, kDebugKey, one.name, &value, 0) == 0;
    if (!isStored) value = value != 0 ? 1 : 0;
    relaxedStore(one.variable, value);
    if (!isStored) kvCFGValueDword(KVSTDCONFIG, kDebugKey, one.name, &value, 1);
}

enum class Text { missing, tooLong, read };

/// Reads a text into szLogName, which is otherwise empty, as for a value without text.
Text readLogName(const char* key, const char* name) {
    szLogName[0] = '\0';
    return border::atBorder(Text::missing, [&] {
        const auto text = border::storedText(KVSTDCONFIG, key, name);
        if (!text) return Text::missing;
        return border::copyText(szLogName, sizeof szLogName, *text) ? Text::read : Text::tooLong;
    });
}

void writeLogName() {
    std::uint32_t length = 0;
    kvCFGValueString(KVSTDCONFIG, kDebugKey, kLogName, szLogName, &length, 1);
}

void adoptLogName() { border::copyText(gszLogName, sizeof gszLogName, szLogName); }

/// A name that is not absolute is wiped from the settings as well. Meant. So is one that is too long.
void readConfiguredName() {
    if (readLogName(kDebugKey, kLogName) == Text::missing) {
        border::copyText(szLogName, sizeof szLogName, ".");
        writeLogName();
        return;
    }
    const std::string_view name = szLogName;
    if (name.size() < kShortestLogName || !name.starts_with('/')) {
        szLogName[0] = '\0';
        writeLogName();
    }
    adoptLogName();
}

/// A path too long for the name of a file in it is as good as none.
void readServerName() {
    const bool found = readLogName(kServerKey, "Path") == Text::read;
    if (found && border::appendText(szLogName, sizeof szLogName, kLogInServer)) {
        writeLogName();
        kvCFGSave(KVSTDCONFIG, nullptr, 0);
    } else {
        szLogName[0] = '\0';
    }
    adoptLogName();
}

}  // namespace
}  // namespace kv::diag

char* _ReadRegSettings(void) {
    const kv::border::KeepErrno keep;
    for (const auto& one : kv::diag::kSwitches) kv::diag::readSwitch(one);
    kv::diag::readConfiguredName();
    if (gszLogName[0] == '\0') kv::diag::readServerName();
    kv::border::relaxedStore(gfReadReg, 1u);
    return gszLogName;
}

std::uint32_t _GetErrorLevel(void) { return 0; }

std::uint32_t ErrMsgUseBox(std::uint32_t fUse) {
    kv::border::relaxedStore(gfUseErrorBox, fUse);
    return 0;
}

// The four below change nothing, whatever they are passed. Meant.
std::uint32_t ErrMsgNotifyMK(std::uint32_t) { return 0; }
std::uint32_t ErrMsgMKTestActive(std::uint32_t) { return 0; }
std::uint32_t ErrMsg2MKActive(std::uint32_t) { return 0; }
std::uint32_t ErrMsgUseWindow(std::uint32_t) { return 0; }
