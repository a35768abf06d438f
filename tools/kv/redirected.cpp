// For the questions that the library answers about a text as it stands. Calls that take a path redirect it themselves.
#include "kv/redirected.h"

#include <array>

#include "kvos/locator.h"

namespace kv::tool {

std::string redirected(const std::string& locator) {
    std::array<char, 4096> target{};
    kvOSReDir(locator.c_str(), target.data());
    return target.data();
}

bool isObject(const std::string& locator) { return kvOSUseAws(redirected(locator).c_str()) != 0; }

bool isUrl(const std::string& locator) { return !isObject(locator) && kvOSFUseCurl(redirected(locator).c_str()) != 0; }

bool isOnNetwork(const std::string& locator) { return isObject(locator) || isUrl(locator); }

}  // namespace kv::tool
