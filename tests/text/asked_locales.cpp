// setlocale of the test program: the system's, which keeps what it was asked for.
#include "text/asked_locales.h"

#include <clocale>
#include <dlfcn.h>

#include "kvos/export.h"

std::vector<std::string>& kvtest::askedLocales() {
    static std::vector<std::string> names;
    return names;
}

KVUTIL_API char* setlocale(int category, const char* name) noexcept {
    static const auto systems = reinterpret_cast<char* (*)(int, const char*)>(dlsym(RTLD_NEXT, "setlocale"));
    if (name != nullptr) kvtest::askedLocales().emplace_back(name);
    return systems(category, name);
}
