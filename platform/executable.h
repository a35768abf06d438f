// What the system tells about the running program: where its file lies, and by which name it was called.
//
// The two need not agree: whoever starts a program chooses its first argument freely, with or without a directory.
#pragma once

#include <cstddef>

namespace kv::platform {

/// The path of the program's file. False, with errno set and an empty target, where the system does not tell and for a
/// path that does not fit.
bool executablePath(char* target, std::size_t size) noexcept;

/// The first word of the process's argument vector. False, with an empty target, for a process without arguments, and
/// with errno ENAMETOOLONG for a word that does not fit. Nothing is written behind the word's terminator.
bool firstArgument(char* target, std::size_t size) noexcept;

}  // namespace kv::platform
