// A command line in one text, taken apart into the arguments of a program.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace kv::system {

/// As many arguments as a line gives; what is behind them is dropped.
inline constexpr std::size_t kMostArguments = 254;

/// The arguments of a line, in their order, behind the program's own name.
class CommandLine {
public:
    CommandLine(const char* application, std::string_view line);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// With a null pointer behind the last, as a program is started with. They live as long as this object.
    char* const* arguments() const { return arguments_.data(); }

private:
    std::vector<char> text_;
    std::vector<char*> arguments_;
};

}  // namespace kv::system
