// The documents that an object store answers with.
#pragma once

#include <string>
#include <string_view>

#include "servers/scripted_server.h"

namespace kvtest {

std::string asXmlText(std::string_view text);
std::string element(std::string_view name, std::string_view text);
std::string document(std::string_view name, const std::string& content);
Answer refusal(int status, const std::string& code, const std::string& message);

}  // namespace kvtest
