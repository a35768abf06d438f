// Names on the command line, whatever they look like.
//
// The parser takes an argument such as "[a,b]" for a list of two. Names like that exist, so each argument that begins
// with a bracket gets a mark at its end before the parser sees it, and the positional arguments lose it again.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace kv::tool {

/// The arguments behind the program's name, marked, and last one first, as the parser wants them.
std::vector<std::string> markedArguments(int argc, char** argv);

/// An argument without its mark.
std::string unmarked(std::string argument);

/// Adds an option that takes a text of any form: a text, or a vector of texts for one that may be given several times.
template <class Target>
CLI::Option* addText(CLI::App& command, const std::string& name, Target& target, const std::string& help) {
    return command.add_option(name, target, help)
        ->transform(CLI::Validator(
            [](std::string& argument) {
                argument = unmarked(argument);
                return std::string();
            },
            ""));
}

/// Adds a required positional argument: a text, or a vector of texts for one or more.
template <class Target>
CLI::Option* addPositional(CLI::App& command, const std::string& name, Target& target, const std::string& help) {
    return addText(command, name, target, help)->required();
}

}  // namespace kv::tool
