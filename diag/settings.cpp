// The switches of the reporting calls, and their reading from the settings.
#include <cstdint>

#include "border/relaxed.h"
#include "errlog.h"

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

char* _ReadRegSettings(void) {
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
