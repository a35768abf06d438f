// kv cp: a copy of a file, from anywhere to anywhere.
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/copy_file.h"
#include "kv/source.h"

namespace kv::tool {
namespace {

struct Request {
    std::string source;
    std::string destination;
};

Exit cp(const Request& request) {
    const std::string target = targetOf(request.source, request.destination);
    if (isRefused(request.source, target)) return Exit::failed;
    auto source = Source::open(request.source);
    return source ? copyFrom(*source, target) : Exit::failed;
}

}  // namespace

void declareCp(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("cp", "Copy a file from any locator to any other");
    command->footer(
        "A file that exists is replaced, and only by a whole copy. A web server is sent the file in one request (PUT), "
        "and the file is read back to see that it took it; for that the file is kept in memory. A store gets it in "
        "parts, "
        "and is asked afterwards whether it has all of it; it keeps no empty file.\n"
        "Example: kv cp http://media/clip.mov /media/clip.mov");
    auto request = std::make_shared<Request>();
    addPositional(*command, "SRC", request->source, "File to copy");
    addPositional(*command, "DST", request->destination,
                  "File to make, or a folder to make it in (local, or s3://.../)");
    command->callback([&chosen, request] { chosen = [request] { return cp(*request); }; });
}

}  // namespace kv::tool
