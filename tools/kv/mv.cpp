// kv mv: a rename where one disk holds both, otherwise a whole copy, and only then the source goes.
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/copy_file.h"
#include "kv/redirected.h"
#include "kv/source.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

namespace fs = std::filesystem;

struct Request {
    std::string source;
    std::string destination;
};

/// Nothing where a rename is not the way.
std::optional<Exit> renamed(const std::string& source, const std::string& target) {
    std::error_code error;
    const std::string from = redirected(source);
    const std::string to = redirected(target);
    if (isOnNetwork(source) || isOnNetwork(target) || !fs::is_regular_file(from, error)) return std::nullopt;
    if (fs::exists(to, error) && !fs::is_regular_file(to, error)) return std::nullopt;
    if (std::rename(from.c_str(), to.c_str()) == 0) return Exit::ok;
    if (errno == EXDEV) return std::nullopt;
    complainOf("create", target);
    return Exit::failed;
}

Exit removeSource(const std::string& source) {
    kvOSSetLastError(0);
    if (kvOSDeleteFile(source.c_str()) == (isObject(source) ? 0u : 1u)) return Exit::ok;
    complain("copied, but cannot delete '" + source + "': " + reasonOf(kvOSGetLastError()));
    return Exit::failed;
}

Exit mv(const Request& request) {
    const std::string target = targetOf(request.source, request.destination);
    if (isRefused(request.source, target)) return Exit::failed;
    if (const auto result = renamed(request.source, target)) return *result;
    auto source = Source::open(request.source);
    if (!source || copyFrom(*source, target) != Exit::ok) return Exit::failed;
    source.reset();
    return removeSource(request.source);
}

}  // namespace

void declareMv(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("mv", "Move a file from any locator to any other");
    command->footer(
        "What is not renamed is copied as by kv cp, and deleted once the copy is whole.\n"
        "Example: kv mv clip.mov /archive/");
    auto request = std::make_shared<Request>();
    addPositional(*command, "SRC", request->source, "File to move");
    addPositional(*command, "DST", request->destination, "Its new name, or a folder (local, or s3://.../)");
    command->callback([&chosen, request] { chosen = [request] { return mv(*request); }; });
}

}  // namespace kv::tool
