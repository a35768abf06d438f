// kv mkdir: makes one folder.
#include <cstdint>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

constexpr unsigned long kHighestMode = 07777;

struct NewFolder {
    std::string path;
    std::string mode = "0775";
};

/// An empty text for a mode in octal, otherwise what is wrong with it. Mode 0 is not passed on: the library would take
/// it as the usual one.
std::string judgeMode(const std::string& text) {
    const bool octal = !text.empty() && text.size() <= 6 && text.find_first_not_of("01234567") == std::string::npos;
    const unsigned long mode = octal ? std::stoul(text, nullptr, 8) : 0;
    return mode >= 1 && mode <= kHighestMode ? "" : "'" + text + "' is no mode: octal, 1 to 7777";
}

Exit makeFolder(const NewFolder& folder) {
    kvOSSetLastError(0);
    const auto mode = static_cast<std::uint32_t>(std::stoul(folder.mode, nullptr, 8));
    if (kvOSMakeDir(folder.path.c_str(), mode) == 0) return Exit::ok;
    complainOf("make folder", folder.path);
    return Exit::failed;
}

}  // namespace

void declareMkdir(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("mkdir", "Make a folder; the one around it must exist");
    command->footer("Example: kv mkdir --mode 750 /media/incoming");
    auto folder = std::make_shared<NewFolder>();
    addPositional(*command, "PATH", folder->path, "Folder to make");
    command->add_option("-m,--mode", folder->mode, "Mode bits in octal, used as they stand")
        ->check(CLI::Validator(judgeMode, "OCTAL"))
        ->capture_default_str();
    command->callback([&chosen, folder] { chosen = [folder] { return makeFolder(*folder); }; });
}

}  // namespace kv::tool
