// The only file that decides how documents are printed; the commands only fill them.
#include "kv/json_text.h"

#include <nlohmann/json.hpp>

namespace kv::tool {
namespace {

std::string dumped(const nlohmann::ordered_json& document, int indentation) {
    return document.dump(indentation, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string jsonText(const nlohmann::ordered_json& document) { return dumped(document, 2); }

std::string jsonLine(const nlohmann::ordered_json& document) { return dumped(document, -1); }

}  // namespace kv::tool
