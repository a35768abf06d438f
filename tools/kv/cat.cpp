// kv cat: a file to standard output.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/open_file.h"
#include "kv/standard_streams.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

Exit cat(const std::string& locator) {
    const OpenFile file = OpenFile::forReading(locator);
    if (!file.isOpen()) {
        complainOf("open", locator);
        return Exit::failed;
    }
    std::vector<char> block(kBlockSize);
    for (;;) {
        std::uint32_t got = 0;
        kvOSSetLastError(0);
        const bool read = kvOSReadFile(file.handle(), block.data(), kBlockSize, &got, nullptr) != 0;
        // At its end a local file reads nothing and succeeds, every other kind fails: only this tells it from a fault.
        if (!read && kvOSfeof(file.handle()) == 0) {
            complainOf("read", locator);
            return Exit::failed;
        }
        if (got == 0) return Exit::ok;
        const Exit written = writeOut({block.data(), got});
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
