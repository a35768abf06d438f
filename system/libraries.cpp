// Libraries that are opened at run time, and the folder to which the search for them falls back.
#include <array>
#include <cerrno>
#include <cstdint>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

#include "border/guard.h"
#include "border/text.h"
#include "errlog.h"
#include "kvos/locator.h"
#include "kvos/process.h"
#include "platform/library.h"

namespace kv::system {
namespace {

constexpr const char* kFallback = "/Library/frameworks/KorvaneKit.framework/Libraries";

const char* shown(const char* text) { return text == nullptr ? "" : text; }

/// Goes to what stands for a folder after the redirect.
bool changeTo(const char* folder) {
    border::PathBuffer redirected;
    kvOSReDir(folder, redirected);
    return chdir(redirected) == 0;
}

/// In the folder to fall back to while it lives. Meant: the way back is redirected like the way there.
class InFallback {
public:
    InFallback() : wasNoted_(getcwd(before_, sizeof before_) != nullptr), isThere_(changeTo(kFallback)) {}
    ~InFallback() {
        const border::KeepErrno keep;
        if (wasNoted_) changeTo(before_);
    }
    InFallback(const InFallback&) = delete;
    InFallback& operator=(const InFallback&) = delete;

    bool isThere() const { return isThere_; }

private:
    border::PathBuffer before_;
    bool wasNoted_;
    bool isThere_;
};

/// What was opened, or why nothing was.
struct Opened {
    void* library = nullptr;
    int error = 0;
    std::string reason{};
};

/// Only the folder to fall back to may count for a bare name: whatever else the working directory is, a library that
/// happens to lie there was not meant.
Opened openFromFallback(const char* path, int flags) {
    const InFallback folder;
    errno = 0;
    void* const library = folder.isThere() ? platform::openFromHere(path, flags) : platform::openLibrary(path, flags);
    if (library != nullptr) return {library};
    const int error = errno != 0 ? errno : ENOENT;  // a loader need not set it, and 0 would be no failure
    return {nullptr, error, shown(dlerror())};
}

void* load(const char* path, int flags) {
    if (void* const library = platform::openLibrary(path, flags)) return library;
    const Opened again = openFromFallback(path, flags);
    if (again.library != nullptr) return again.library;
    errno = again.error;
    ErrOut("kvOSLoadLibrary(%s) ", again.reason.c_str());
    ErrOut("kvOSLoadLibrary(FAILED=0x%lX) %s", static_cast<unsigned long>(again.error), shown(path));
    return nullptr;
}

}  // namespace
}  // namespace kv::system

void* kvOSLoadLibrary(const char* pPath, std::uint32_t dwFlags) {
    using namespace kv::system;
    return kv::border::atBorder(
        static_cast<void*>(nullptr), [&] { return load(pPath, static_cast<int>(dwFlags)); },
        [&](const char*) { ErrOut("Exception loading library(%s) ", shown(pPath)); });
}

std::int32_t kvOSFreeLibrary(void* hLibrary) {
    if (hLibrary != nullptr) return dlclose(hLibrary);
    errno = EINVAL;
    return -1;
}

void* kvOSGetProcAddress(void* hLibrary, const char* pName) {
    const bool isGood = hLibrary != nullptr && pName != nullptr;
    void* const address = isGood ? dlsym(hLibrary, pName) : nullptr;
    if (address != nullptr) return address;
    if (!isGood) errno = EINVAL;
    const auto error = static_cast<unsigned>(errno);
    ErrOut("kvOSGetProcAddress(FAILED=0x%X - '%s') ", error, isGood ? kv::system::shown(dlerror()) : "");
    return nullptr;
}
