// kv cut: a range of a file as a file of its own.
#include <cstdint>
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
    std::uint64_t from = 0;
    std::uint64_t bytes = 0;
};

Exit cut(const Request& request) {
    const std::string target = targetOf(request.source, request.destination);
    if (isRefused(request.source, target)) return Exit::failed;
    auto source = Source::open(request.source);
    if (!source || !source->narrow(request.from, request.bytes)) return Exit::failed;
    return copyFrom(*source, request.bytes, target);
}

}  // namespace

void declareCut(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("cut", "Copy a range of a file into a file of its own");
    command->footer("Example: kv cut http://media/clip.mov head.mov --from 0 --bytes 65536");
    auto request = std::make_shared<Request>();
    addPositional(*command, "SRC", request->source, "File to cut from");
    addPositional(*command, "DST", request->destination,
                  "File to make, or a folder to make it in (local, or s3://.../)");
    const auto addNumber = [command](const char* name, std::uint64_t& number, const char* help) {
        // The parser takes a negative number for a huge one.
        const CLI::Validator isNumber = CLI::Validator(CLI::NonNegativeNumber).description("");
        command->add_option(name, number, help)->required()->type_name("N")->check(isNumber);
    };
    addNumber("--from", request->from, "First byte of the range, counted from 0");
    addNumber("--bytes", request->bytes, "How many bytes");
    command->callback([&chosen, request] { chosen = [request] { return cut(*request); }; });
}

}  // namespace kv::tool
