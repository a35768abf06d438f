// What a request to an object store asks for, by its method, host, path, query and headers.
#pragma once

#include <string>
#include <string_view>

#include "servers/scripted_store.h"

namespace kvtest {

/// A bucket may stand ahead of this name in the host's.
inline constexpr std::string_view kDomain = "s3.localhost";

StoreRequest understood(const Request& http);

/// Percent signs and the two digits behind them become bytes; in a query a plus sign is a blank, in a path it is not.
std::string decoded(std::string_view text, bool plusIsBlank);

}  // namespace kvtest
