// JSON on standard output.
#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace kv::tool {

/// One JSON document and a line end. Bytes of a name that are no UTF-8 become U+FFFD, so that it is valid whatever the
/// names are.
std::string jsonText(const nlohmann::ordered_json& document);

/// The same on one line.
std::string jsonLine(const nlohmann::ordered_json& document);

}  // namespace kv::tool
