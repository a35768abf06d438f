// The two texts of a login: the token file, and what the endpoint answers.
#pragma once

#include <string_view>

#include "file/handle.h"

namespace kv::file {

/// Takes who logs in, and with what, into the record.
void readTokenFile(kvOSFileHandle& file, std::string_view text);

/// Takes the token and the end of its time into the record, and reports a refusal.
void readTokenAnswer(kvOSFileHandle& file, std::string_view answer);

}  // namespace kv::file
