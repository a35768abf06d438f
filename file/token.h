// The login of URL handles: a token file for the host of a URL, and the token that its endpoint gives for it.
#pragma once

#include <string_view>

#include "file/handle.h"

namespace kv::file {

/// What becomes of a token file that is there and can't be read: the request goes on without a token either way.
enum class Unreadable { reported, passedOver };

/// Logs a record in, if the URL is HTTP or HTTPS and there is a token file for its host.
void logIn(kvOSFileHandle& file, std::string_view url, Unreadable unreadable);

/// Whether a token's time is over, by the monotonic clock cut to 32 bits.
bool isTokenExpired(const kvOSFileHandle& file);

/// Whether two URLs lead to one host and port, by the texts alone.
bool haveSameHost(std::string_view one, std::string_view other);

/// Frees all texts of a login, and with them the right to the token.
void forgetLogin(kvOSFileHandle& file);

/// Frees all texts of a login.
void freeTokenTexts(kvOSFileHandle& file);

/// Puts a copy of a text, to be freed with free, in the place of an old one. False, and the old one stays, when memory
/// is short.
bool replaceText(char*& field, std::string_view text);

}  // namespace kv::file
