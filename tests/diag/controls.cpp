#include "diag/controls.h"

#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <sys/time.h>
#include <unistd.h>

#include "errlog.h"
#include "kvcfg.h"
#include "kvos/memory.h"
#include "kvos/sync.h"
#include "kvos/time.h"

namespace kvtest {

Controls& controls() {
    static Controls all;
    return all;
}

namespace {

/// The library's own call of that name.
template <class Call>
Call* original(const char* name) {
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

/// Runs a copy, so that it may take itself away.
void run(const std::function<void()> ahead) {
    if (ahead) ahead();
}

}  // namespace
}  // namespace kvtest

using kvtest::controls;

// Seen by the library as well, whatever visibility the program is compiled with.
#pragma GCC visibility push(default)
extern "C" {

uint32_t kvOSGetMs(void) { return controls().monotonic_ms; }

int gettimeofday(struct timeval* now, void*) noexcept {
    now->tv_sec = static_cast<std::time_t>(controls().wall_s);
    now->tv_usec = static_cast<suseconds_t>(controls().wall_us);
    return 0;
}

void* KVAlloc(uint32_t dwSize) {
    const bool thisOne = controls().allocationsUntilThrow >= 0 && controls().allocationsUntilThrow-- == 0;
    if (thisOne || controls().throwsAlways) {
        ++controls().throws;
        throw 1;
    }
    if (controls().allocationsUntilFailure >= 0 && controls().allocationsUntilFailure-- == 0) return nullptr;
    ++controls().blocks;
    return std::malloc(dwSize);
}

void KVFree(void* pBlock) {
    if (controls().freeThrows) throw 1;
    if (pBlock != nullptr) --controls().blocks;
    std::free(pBlock);
}

int32_t kvOSEnterCriticalSection(kvOSCriticalSection* pSection) {
    static auto* const enter = kvtest::original<decltype(kvOSEnterCriticalSection)>("kvOSEnterCriticalSection");
    if (pSection == &gErrLogList.lock) kvtest::run(controls().beforeEnteringLog);
    return enter(pSection);
}

uint32_t kvCFGValueString(KVTiXmlConfig* hConfig, const char* pKey, const char* pName, char* pBuffer,
                          uint32_t* pdwLength, uint32_t fWrite) {
    static auto* const value = kvtest::original<decltype(kvCFGValueString)>("kvCFGValueString");
    if (fWrite == 0 && pBuffer != nullptr) kvtest::run(controls().beforeReadingText);
    return value(hConfig, pKey, pName, pBuffer, pdwLength, fWrite);
}

int usleep(useconds_t microseconds) {
    ++(microseconds == 1000 ? controls().sleeps : controls().otherSleeps);
    if (controls().sleepThrows) throw 1;
    return 0;
}

}  // extern "C"
#pragma GCC visibility pop
