// The loader of macOS looks for a bare name in the working directory by itself. The library's own file is that of its
// framework, from which an application has loaded it.
//
// No machine of this project has run this file.
#include "platform/library.h"

#include <dlfcn.h>
#include <string_view>

#include "border/text.h"

namespace kv::platform {

void* openLibrary(const char* path, int flags) { return dlopen(path, flags); }

void* openFromHere(const char* path, int flags) { return dlopen(path, flags); }

bool ownLibraryFolder(char* target, std::size_t size) noexcept {
    constexpr std::string_view kName = "libkvutil.dylib";
    target[0] = '\0';
    void* const library = dlopen("KorvaneKit.framework/Versions/6/libkvutil.dylib", RTLD_LAZY);
    if (library == nullptr) return false;
    const void* const symbol = dlsym(library, "kvOSGetDynaLibDir");
    Dl_info found{};
    bool isTold = false;
    if (symbol != nullptr && dladdr(symbol, &found) != 0) {
        std::string_view file = border::orEmpty(found.dli_fname);
        // A path that is no longer than the name has no folder to tell, and stays.
        if (file.size() > kName.size()) file.remove_suffix(kName.size());
        isTold = border::copyText(target, size, file) && !file.empty();
    }
    dlclose(library);
    return isTold;
}

}  // namespace kv::platform
