// The loader of Linux looks for a bare name in its own folders only. It knows the file that an address lies in under
// the name by which it found it.
#include "platform/library.h"

#include <cstring>
#include <dlfcn.h>
#include <string>
#include <string_view>
#include <unistd.h>

#include "border/text.h"

namespace kv::platform {
namespace {

/// The C library declares that no exception comes out of it, which would end the process where one does: so nobody may
/// see what is called here.
void* (*const volatile kOpen)(const char*, int) = dlopen;

}  // namespace

void* openLibrary(const char* path, int flags) { return kOpen(path, flags); }

void* openFromHere(const char* path, int flags) {
    if (path == nullptr || *path == '\0' || std::strchr(path, '/') != nullptr) return openLibrary(path, flags);
    const std::string inHere = "./" + std::string(path);
    // Of a library that lies elsewhere, the loader's own search tells why it can't be opened.
    return openLibrary(access(inHere.c_str(), F_OK) == 0 ? inHere.c_str() : path, flags);
}

bool ownLibraryFolder(char* target, std::size_t size) noexcept {
    target[0] = '\0';
    Dl_info here{};
    if (dladdr(reinterpret_cast<const void*>(&ownLibraryFolder), &here) == 0) return false;
    const std::string_view file = border::orEmpty(here.dli_fname);
    const std::size_t name = file.rfind('/') + 1;
    return name != 0 && border::copyText(target, size, file.substr(0, name));
}

}  // namespace kv::platform
