// kv event: one event into the event log.
//
// Each run is a program of its own to the log, and so begins the next numbered file, which may take the place of the
// oldest. A file that is given gets a line more instead.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

#include "errlog.h"
#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/content.h"
#include "kv/event_lines.h"
#include "kv/find_pattern.h"
#include "kv/open_file.h"
#include "kv/standard_streams.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

struct Request {
    std::string name, description, details, timecode, file;
    std::uint32_t code = 0;
    std::uint32_t subCode = 0;
};

/// The log neither quotes nor escapes, and reads a percent sign as a format.
bool canBeLogged(std::string_view text) {
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F || character == ',' || character == '"' || character == '%') return false;
    }
    return true;
}

bool allCanBeLogged(const Request& request) {
    for (const std::string* text : {&request.name, &request.description, &request.details, &request.timecode}) {
        if (canBeLogged(*text)) continue;
        complain("cannot log '" + *text +
                 "': no text of an event may hold a comma, a double quote, a percent sign or a control character");
        return false;
    }
    return true;
}

/// A file that the log can't open would make it begin a numbered one instead, so that is tried first.
bool canBeAppendedTo(const std::string& file) {
    kvOSSetLastError(0);
    const std::int64_t handle = kvOSCreateFile(file.c_str(), KVFILE_WRITE, 1, nullptr, KVFILE_OPEN_ALWAYS, 0, 0);
    if (handle != KVFILE_INVALID && kvOSCloseFile(handle) != 0) return true;
    complainOf("open", file);
    return false;
}

/// The log tells nothing of what it could not write, and a full disk leaves a line cut.
bool holdsAsLast(const std::string& path, const std::string& name) {
    const auto content = contentOf(path);
    if (!content || !content->ends_with('\n')) return false;
    const auto events = eventLines(*content);
    return !events.empty() && events.back().name == name;
}

Exit log(const Request& request) {
    if (!allCanBeLogged(request)) return Exit::usage;
    const std::string given = request.file.empty() ? "" : withFolder(request.file);
    if (!given.empty() && !canBeAppendedTo(given)) return Exit::failed;
    const std::uint64_t before = sizeOf(given).value_or(0);
    if (!given.empty()) kvEventLog_SetName(given.c_str());
    kvEventLog_Event(request.code, request.subCode, request.name.c_str(), request.description.c_str(),
                     request.details.c_str(), request.timecode.c_str());
    const std::string path = kvEventLog_GetName();
    kvEventLog_Close();
    if (sizeOf(path).value_or(0) > before && holdsAsLast(path, request.name)) return writeOut(path + "\n");
    complain("cannot write the event to '" + (given.empty() ? KVEVENTLOG_FOLDER : request.file) +
             "' (with -v the library tells why)");
    return Exit::failed;
}

}  // namespace

void declareEvent(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("event", "Write an event to the event log, and print the name of its file");
    command->footer("Example: kv event 'Lost signal' -c 0x10 -d 'Input 3' -t 01:00:00:00");
    auto request = std::make_shared<Request>();
    addPositional(*command, "NAME", request->name, "What happened");
    command->add_option("-c,--code", request->code, "A number, as 16 or 0x10; 0 unless told")->type_name("CODE");
    command->add_option("-s,--subcode", request->subCode, "The same")->type_name("CODE");
    addText(*command, "-d,--description", request->description, "Of what it happened to")->type_name("TEXT");
    addText(*command, "--details", request->details, "More of it")->type_name("TEXT");
    addText(*command, "-t,--timecode", request->timecode, "When it happened in the material")->type_name("TEXT");
    addText(*command, "-f,--file", request->file,
            "Append to this file; the next one in " KVEVENTLOG_FOLDER " is begun unless told")
        ->type_name("FILE");
    command->callback([&chosen, request] { chosen = [request] { return log(*request); }; });
}

}  // namespace kv::tool
