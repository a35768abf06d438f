// kv put: standard input to a file.
//
// The library may hold bytes back until the close, so that the command has succeeded only when the close has.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <strings.h>
#include <vector>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/destination.h"
#include "kv/human_size.h"
#include "kv/open_file.h"
#include "kv/redirected.h"
#include "kv/standard_streams.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

/// A short write succeeds, so the count decides.
bool writeAll(const OpenFile& file, const char* bytes, std::uint32_t count) {
    std::uint32_t written = 0;
    kvOSSetLastError(0);
    return kvOSWriteFile(file.handle(), bytes, count, &written, nullptr) != 0 && written == count;
}

bool isInMemory(const std::string& locator) { return strncasecmp(locator.c_str(), "mem://", 6) == 0; }

/// A server or a store is asked in the end whether it has it.
Exit putOnServer(const std::string& locator) {
    if (isNoDestination(locator)) return Exit::failed;
    const auto destination = openDestination({locator, std::nullopt});
    if (destination == nullptr) return Exit::failed;
    std::vector<char> block(kBlockSize);
    for (;;) {
        const auto got = readIn(block);
        if (!got) return Exit::failed;
        if (*got == 0) return destination->finish() ? Exit::ok : Exit::failed;
        if (!destination->write({block.data(), *got})) return Exit::failed;
    }
}

Exit putInFile(const std::string& locator) {
    OpenFile file = OpenFile::forWriting(locator);
    if (!file.isOpen()) {
        complainOf("create", locator);
        return Exit::failed;
    }
    std::vector<char> block(kBlockSize);
    std::uint64_t total = 0;
    for (;;) {
        const auto got = readIn(block);
        if (!got) return Exit::failed;
        if (*got == 0) break;
        if (!writeAll(file, block.data(), static_cast<std::uint32_t>(*got))) {
            complainOf("write", locator);
            return Exit::failed;
        }
        total += *got;
    }
    kvOSSetLastError(0);
    if (!file.close()) {
        complainOf("finish", locator);
        return Exit::failed;
    }
    if (isInMemory(locator)) {
        complain("'" + locator + "' took " + humanSize(total) + " and is gone: a file in memory ends with the command");
    }
    return Exit::ok;
}

Exit put(const std::string& locator) { return isOnNetwork(locator) ? putOnServer(locator) : putInFile(locator); }

}  // namespace

void declarePut(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("put", "Write standard input to a file, replacing one that exists");
    command->footer("Example: kv put /media/copy.mov < clip.mov");
    auto locator = std::make_shared<std::string>();
    addPositional(*command, "LOCATOR", *locator, "File to write");
    command->callback([&chosen, locator] { chosen = [locator] { return put(*locator); }; });
}

}  // namespace kv::tool
