// The line is taken apart where it stands: an argument is a piece of it with a terminator put behind it.
#include "system/command_line.h"

#include <cstring>

namespace kv::system {
namespace {

/// Joins a piece that begins with a quote with those behind it, up to one that ends with a quote: the blanks between
/// them are put back where terminators stand. Meant: the piece's own end is not looked at.
char* joined(char* piece, char** rest) {
    char* const text = piece + 1;
    char* end = text + std::strlen(text);
    while (char* const next = strtok_r(nullptr, " ", rest)) {
        *end = ' ';
        end = next + std::strlen(next);
        if (end[-1] != '"') continue;
        end[-1] = '\0';
        break;
    }
    return text;
}

}  // namespace

CommandLine::CommandLine(const char* application, std::string_view line) : text_(line.size() + 2) {
    line.copy(text_.data(), line.size());
    arguments_.push_back(const_cast<char*>(application));  // programs are started with their own copies
    char* rest = nullptr;
    for (char* piece = strtok_r(text_.data(), " ", &rest); piece != nullptr && arguments_.size() <= kMostArguments;
         piece = strtok_r(nullptr, " ", &rest)) {
        arguments_.push_back(*piece == '"' ? joined(piece, &rest) : piece);
    }
    arguments_.push_back(nullptr);
}

}  // namespace kv::system
