// kv cat: a file to standard output.
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/source.h"
#include "kv/standard_streams.h"

namespace kv::tool {
namespace {

Exit cat(const std::string& locator) {
    auto source = Source::open(locator);
    if (!source) return Exit::failed;
    for (;;) {
        const auto block = source->next();
        if (!block) return Exit::failed;
        if (block->empty()) return Exit::ok;
        const Exit written = writeOut({block->data(), block->size()});
        if (written != Exit::ok) return written;
    }
}

}  // namespace

void declareCat(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("cat", "Write a file to standard output");
    command->footer("Example: kv cat /media/clip.mov > copy.mov");
    auto locator = std::make_shared<std::string>();
    addPositional(*command, "LOCATOR", *locator, "File to read");
    command->callback([&chosen, locator] { chosen = [locator] { return cat(*locator); }; });
}

}  // namespace kv::tool
