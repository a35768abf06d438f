// The secrets that locators may hold ("s3://access:secret@host/..."), kept from screens and from lists of processes.
#pragma once

#include <string>
#include <string_view>

namespace kv::tool {

/// The text of a message with "***" for the secret of each locator that stands in it, alone or in single quotes.
std::string withoutSecrets(std::string_view text);

/// Overwrites the secrets in the arguments that the system shows of a process.
void hideSecrets(int argc, char** argv);

}  // namespace kv::tool
