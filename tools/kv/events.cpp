// kv events: the latest events, over as many files as that takes.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "errlog.h"
#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/content.h"
#include "kv/event_lines.h"
#include "kv/json_text.h"
#include "kv/standard_streams.h"
#include "kv/table.h"

namespace kv::tool {
namespace {

struct Request {
    std::string file;
    std::int64_t count = 20;
    bool json = false;
};

/// The files that the log numbers itself, newest last. Their numbers have leading zeros, so that the listing's order is
/// theirs.
std::vector<std::string> numberedFiles() {
    std::vector<std::string> names;
    kvEventLog_FindFiles(&names);
    std::erase_if(names, [](const std::string& name) { return !name.starts_with("event_"); });
    for (std::string& name : names) name.insert(0, KVEVENTLOG_FOLDER);
    return names;
}

struct Latest {
    std::vector<EventLine> events;  // oldest first
    bool allRead = true;            // a file that can't be read is told and left out
};

Latest latest(const std::vector<std::string>& files, std::size_t count) {
    Latest found;
    auto& events = found.events;  // newest first till the end
    for (auto file = files.rbegin(); file != files.rend() && events.size() < count; ++file) {
        const auto content = contentOf(*file);
        found.allRead = found.allRead && content.has_value();
        if (!content) continue;
        const auto ofFile = eventLines(*content);
        const auto wanted = static_cast<std::ptrdiff_t>(std::min(ofFile.size(), count - events.size()));
        events.insert(events.end(), ofFile.rbegin(), ofFile.rbegin() + wanted);
    }
    std::ranges::reverse(events);
    return found;
}

std::string hexadecimal(std::uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", code);
    return text;
}

std::string asTable(const std::vector<EventLine>& events) {
    if (events.empty()) return {};
    Table table({Align::left, Align::left, Align::left, Align::left, Align::left});
    table.add({"TIME", "TIMECODE", "CODE", "SUBCODE", "EVENT"});
    for (const EventLine& event : events) {
        std::string time = event.time;
        time.replace(time.find('T'), 1, " ");
        std::string text = event.name;
        if (!event.description.empty()) text += ": " + event.description;
        if (!event.details.empty()) text += " (" + event.details + ")";
        table.add({time, event.timecode, hexadecimal(event.code), hexadecimal(event.subCode), text});
    }
    return table.text();
}

std::string asJson(const std::vector<EventLine>& events) {
    auto document = nlohmann::ordered_json::array();
    for (const EventLine& event : events) {
        document.push_back({{"time", event.time},
                            {"timecode", event.timecode},
                            {"name", event.name},
                            {"code", event.code},
                            {"subCode", event.subCode},
                            {"description", event.description},
                            {"details", event.details}});
    }
    return jsonText(document);
}

Exit show(const Request& request) {
    const auto files = request.file.empty() ? numberedFiles() : std::vector<std::string>{request.file};
    if (files.empty()) complain("no events in '" KVEVENTLOG_FOLDER "'");
    const auto [events, allRead] = latest(files, static_cast<std::size_t>(request.count));
    const Exit written = writeOut(request.json ? asJson(events) : asTable(events));
    return files.empty() || !allRead ? Exit::failed : written;
}

}  // namespace

void declareEvents(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("events", "Show the latest events of the event log");
    command->footer("Example: kv events -n 5");
    auto request = std::make_shared<Request>();
    addText(*command, "FILE", request->file, "One file of it; all in " KVEVENTLOG_FOLDER " unless told");
    command->add_option("-n,--lines", request->count, "How many; 20 unless told")->check(CLI::NonNegativeNumber);
    command->add_flag("--json", request->json, "Print one JSON array; times are local");
    command->callback([&chosen, request] { chosen = [request] { return show(*request); }; });
}

}  // namespace kv::tool
