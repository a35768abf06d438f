// A host that opens the library at run time, logs into the file that LOG_FILE names, and lets go of the library before
// it ends: plug_in_host LIBRARY.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <initializer_list>

int main(int, char** argv) {
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return 1;
    auto* const setMode = reinterpret_cast<std::uint32_t (*)(std::int32_t, char*)>(dlsym(library, "ErrLogSetMode"));
    auto* const put = reinterpret_cast<std::uint32_t (*)(std::uint32_t, const char*)>(dlsym(library, "ErrLogPut"));
    auto* const settingsAreRead = static_cast<std::uint32_t*>(dlsym(library, "gfReadReg"));
    if (setMode == nullptr || put == nullptr || settingsAreRead == nullptr) return 2;
    *settingsAreRead = 1;
    setMode(0, std::getenv("LOG_FILE"));
    for (const char* const text : {"first", "second", "last"}) put(0, text);
    return dlclose(library) == 0 ? 0 : 3;
}
