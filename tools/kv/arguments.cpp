// Every argument that begins with a bracket is marked, also one that needs no mark, so that none is unmarked wrongly.
#include "kv/arguments.h"

#include <algorithm>

namespace kv::tool {
namespace {

constexpr char kMark = '|';

bool looksLikeList(const std::string& argument) { return argument.starts_with('['); }

}  // namespace

std::vector<std::string> markedArguments(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::string& argument : arguments) {
        if (looksLikeList(argument)) argument += kMark;
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

std::string unmarked(std::string argument) {
    if (looksLikeList(argument)) argument.pop_back();
    return argument;
}

}  // namespace kv::tool
