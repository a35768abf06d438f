// kv's own messages: one line each, on standard error, in the words "kv: cannot open 'X': No such file or directory".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kv::tool {

/// Writes "kv: ", the text and a line end. Control characters are shown, so that it stays one line; secrets are not.
void complain(std::string_view text);

/// Writes "kv: cannot <action> '<name>': <reason>", the reason being that of the number, as the last error has it.
void complainOf(std::string_view action, std::string_view name, std::uint32_t error);

/// The same with the calling thread's last error.
void complainOf(std::string_view action, std::string_view name);

/// What the system calls an error number; plain words for the numbers that are none of the system's.
std::string reasonOf(std::uint32_t error);

}  // namespace kv::tool
