// Messages in the forms of the library's log list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kv/log_text.h"

namespace kv::tool {

/// All messages in a form of ErrLogGet, one behind the other. Texts are put in as they are: no form escapes them.
std::string inForm(const std::vector<LogMessage>& messages, std::uint32_t form);

/// A page of HTML that shows the messages as a table, whatever their texts hold.
std::string asPage(const std::string& title, std::vector<LogMessage> messages);

}  // namespace kv::tool
