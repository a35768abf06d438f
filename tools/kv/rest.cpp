// kv rest: one request to a REST service, its answer to standard output.
//
// The library's call does not tell the status of an answer, so that a refusal's text is an answer like any other. That
// none came shows in the length alone, which is then left as it was.
#include "kvos/rest.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/content.h"
#include "kv/standard_streams.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kNoAnswer = std::numeric_limits<std::uint32_t>::max();
constexpr const char* kSectionSign = "\xC2\xA7";

struct Request {
    std::string method;
    std::string url;
    std::vector<std::string> headers;
    std::optional<std::string> data;
    std::uint32_t timeout_ms = 0;
};

/// The library parts header lines at each of the two bytes, which other letters are written with as well.
std::optional<std::string> joined(const std::vector<std::string>& headers) {
    std::string text;
    for (const std::string& header : headers) {
        if (header.find_first_of(kSectionSign) != std::string::npos) {
            complain("the header '" + header + "' has a letter that can not be sent in one");
            return std::nullopt;
        }
        text += (text.empty() ? "" : kSectionSign) + header;
    }
    return text;
}

std::optional<std::string> allOfStandardInput() {
    std::string content;
    std::vector<char> block(kBlockSize);
    for (;;) {
        const auto got = readIn(block);
        if (!got) return std::nullopt;
        if (*got == 0) return content;
        content.append(block.data(), *got);
    }
}

/// What the option asks for; nothing on failure, which is told.
std::optional<std::string> bodyFrom(const std::string& data) {
    if (data == "@-") return allOfStandardInput();
    if (data.starts_with('@')) return contentOf(data.substr(1));
    return data;
}

Exit rest(const Request& request) {
    auto headers = joined(request.headers);
    if (!headers) return Exit::usage;
    const auto body = request.data ? bodyFrom(*request.data) : std::optional<std::string>("");
    if (!body) return Exit::failed;
    if (body->size() >= std::numeric_limits<std::uint32_t>::max()) {
        complain("a body of 4 GiB or more can not be sent");
        return Exit::failed;
    }
    char* answer = nullptr;
    std::uint32_t length = kNoAnswer;
    kvOSSetLastError(0);
    kvOSHTTPCommand(request.url.c_str(), request.method.c_str(), headers->data(), request.data ? body->data() : nullptr,
                    static_cast<std::uint32_t>(body->size()), &answer, &length, request.timeout_ms);
    const std::unique_ptr<char, void (*)(void*)> owned(answer, std::free);
    if (length == kNoAnswer) {
        complainOf("reach", request.url);
        return Exit::failed;
    }
    return answer == nullptr ? Exit::ok : writeOut({answer, length});
}

}  // namespace

void declareRest(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("rest", "Send a request to a REST service and show its answer");
    command->footer(
        "GET carries its body as POST does, and goes out as one. What a service says when it refuses is shown like any "
        "other answer; the command fails when none comes.\n"
        "Example: kv rest POST http://localhost:8080/jobs -H 'Content-Type: application/json' -d '{\"clip\":7}'");
    auto request = std::make_shared<Request>();
    addPositional(*command, "METHOD", request->method, "GET, POST, PUT, PATCH or DELETE")
        ->check(CLI::IsMember({"GET", "POST", "PUT", "PATCH", "DELETE"}, CLI::ignore_case).description(""));
    addPositional(*command, "URL", request->url, "Where to send it");
    addText(*command, "-H,--header", request->headers, "Header line to send; may be given several times")
        ->allow_extra_args(false)
        ->type_name("'NAME: VALUE'");
    addText(*command, "-d,--data", request->data, "Body: a text, @FILE for a file's content, @- for standard input")
        ->type_name("TEXT");
    command->add_option("--timeout", request->timeout_ms, "Milliseconds to wait for the whole answer; 0 waits for ever")
        ->type_name("MS");
    command->callback([&chosen, request] { chosen = [request] { return rest(*request); }; });
}

}  // namespace kv::tool
