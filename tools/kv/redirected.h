// A locator after the redirect that a site may have set for its paths.
#pragma once

#include <string>

namespace kv::tool {

/// The text as the file layer sees it; empty, with the last error set, if it does not fit.
std::string redirected(const std::string& locator);

/// Whether it names an object of a store.
bool isObject(const std::string& locator);

/// Whether it names a URL, but not an object of a store.
bool isUrl(const std::string& locator);

/// Whether it names the one or the other, and not something on a local disk.
bool isOnNetwork(const std::string& locator);

}  // namespace kv::tool
