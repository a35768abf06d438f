// The only file that decides how documents are printed; the commands only fill them.
#include "kv/json_text.h"

#include <nlohmann/json.hpp>

namespace kv::tool {

std::string jsonText(const nlohmann::ordered_json& document) {
    return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace kv::tool
