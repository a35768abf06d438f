// kv log: log files, and their messages in the forms that the library gives them.
//
// The list of messages lives in the process that logs. What is here works on the files that such a process leaves.
#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "errlog.h"
#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/content.h"
#include "kv/file_type.h"
#include "kv/json_text.h"
#include "kv/log_forms.h"
#include "kv/log_text.h"
#include "kv/open_file.h"
#include "kv/printable.h"
#include "kv/standard_streams.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

struct Request {
    std::string locator;
    std::int64_t count = 20;
    bool json = false;
    bool force = false;
    std::uint32_t form = KVERRLOG_FORM_LINE;
    std::uint32_t maximum = 0;
    std::string extension = ".log";
};

// ---- reading -----------------------------------------------------------------------------------------------------

std::optional<std::vector<LogMessage>> messagesOf(const std::string& locator) {
    const auto content = contentOf(locator);
    if (!content) return std::nullopt;
    if (looksLikeLog(*content)) return logMessages(*content);
    complain("'" + locator + "' is no log file: it does not begin with \"LOG STARTED\"");
    return std::nullopt;
}

// ---- tail --------------------------------------------------------------------------------------------------------

std::string asLine(const LogMessage& message) {
    std::string line = message.number ? std::to_string(*message.number) : "-";
    line += "  " + message.time + "  " + printable(message.text);
    if (message.repeats > 1) line += "  [repeat x" + std::to_string(message.repeats) + "]";
    return line + "\n";
}

std::string asJson(const std::vector<LogMessage>& messages) {
    auto document = nlohmann::ordered_json::array();
    for (const LogMessage& message : messages) {
        document.push_back({{"number", message.number ? nlohmann::ordered_json(*message.number) : nullptr},
                            {"time", message.time},
                            {"code", message.code},
                            {"repeats", message.repeats},
                            {"text", message.text}});
    }
    return jsonText(document);
}

Exit tail(const Request& request) {
    auto messages = messagesOf(request.locator);
    if (!messages) return Exit::failed;
    const auto left = std::min(request.count, static_cast<std::int64_t>(messages->size()));
    messages->erase(messages->begin(), messages->end() - left);
    if (request.json) return writeOut(asJson(*messages));
    std::string lines;
    for (const LogMessage& message : *messages) lines += asLine(message);
    return writeOut(lines);
}

// ---- dump and html -----------------------------------------------------------------------------------------------

Exit dump(const Request& request) {
    const auto messages = messagesOf(request.locator);
    return messages ? writeOut(inForm(*messages, request.form)) : Exit::failed;
}

Exit html(const Request& request) {
    auto messages = messagesOf(request.locator);
    return messages ? writeOut(asPage(request.locator, std::move(*messages))) : Exit::failed;
}

// ---- clear and rotate --------------------------------------------------------------------------------------------

/// Only what is a log is emptied: a slip in the name must not cost a clip.
Exit clear(const Request& request) {
    if (!request.force && !messagesOf(request.locator)) return Exit::failed;
    OpenFile file = OpenFile::forWriting(request.locator);
    kvOSSetLastError(0);
    if (file.isOpen() && file.close()) return Exit::ok;
    complainOf("empty", request.locator);
    return Exit::failed;
}

Exit rotate(const Request& request) {
    const std::string folder = request.locator.ends_with('/') ? request.locator : request.locator + "/";
    if (fileType(kvOSGetFileAttributes(request.locator.c_str())) != FileType::folder) {
        complain("cannot rotate '" + request.locator + "': it is no folder");
        return Exit::failed;
    }
    kvErrLog_RotateFiles(folder.c_str(), 0, request.extension.c_str(), request.maximum);
    return Exit::ok;
}

// ---- the commands ------------------------------------------------------------------------------------------------

using Run = Exit(const Request&);

CLI::App& add(CLI::App& log, Chosen& chosen, const std::shared_ptr<Request>& request, Run& run, const char* name,
              const char* about, const char* what) {
    auto* command = log.add_subcommand(name, about);
    addPositional(*command, what, request->locator, what == std::string("FILE") ? "Log file" : "Folder of log files");
    command->callback([&chosen, request, &run] { chosen = [request, &run] { return run(*request); }; });
    return *command;
}

const std::map<std::string, std::uint32_t> kForms{{"line", KVERRLOG_FORM_LINE},
                                                  {"text", 1},
                                                  {"html", KVERRLOG_FORM_HTML},
                                                  {"table", KVERRLOG_FORM_HTML_TABLE},
                                                  {"xml", KVERRLOG_FORM_XML}};

}  // namespace

void declareLog(CLI::App& app, Chosen& chosen) {
    auto* log = app.add_subcommand("log", "Show, convert, empty and rotate log files");
    log->footer("Example: kv log tail -n 5 /var/log/run_0126-10-21T09-00-00-123.log");
    log->require_subcommand(1);
    log->fallthrough();
    auto request = std::make_shared<Request>();

    auto& tailCommand = add(*log, chosen, request, tail, "tail", "Print the last messages of a log file", "FILE");
    tailCommand.add_option("-n,--lines", request->count, "How many; 20 unless told")->check(CLI::NonNegativeNumber);
    tailCommand.add_flag("--json", request->json, "Print one JSON array");

    auto& dumpCommand =
        add(*log, chosen, request, dump, "dump", "Print all messages in a form of the log list", "FILE");
    dumpCommand.add_option("-f,--form", request->form, "line, text, html, table or xml; texts are not escaped in any")
        ->transform(CLI::Transformer(kForms))
        ->check(CLI::IsMember({0, 1, 100, 200, 300}))
        ->type_name("FORM");

    add(*log, chosen, request, html, "html", "Write all messages as a page for a browser to standard output", "FILE");

    auto& clearCommand =
        add(*log, chosen, request, clear, "clear", "Empty the log file of a program that has ended", "FILE");
    clearCommand.add_flag("--force", request->force, "Also what is no log file");

    auto& rotateCommand =
        add(*log, chosen, request, rotate, "rotate", "Delete the oldest log files to make room for one more", "FOLDER");
    rotateCommand.add_option("-m,--max", request->maximum, "How many there may be with the new one")
        ->required()
        ->check(CLI::Range(1u, 0xFFFFFFFFu));
    rotateCommand.add_option("-e,--extension", request->extension, "Of the files that count; .log unless told");
}

}  // namespace kv::tool
