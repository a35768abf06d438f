// kv stat: what is known of a file by its name.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/file_type.h"
#include "kv/human_size.h"
#include "kv/json_text.h"
#include "kv/moment.h"
#include "kv/open_file.h"
#include "kv/redirected.h"
#include "kv/secrets.h"
#include "kv/standard_streams.h"
#include "kv/table.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

struct Request {
    std::vector<std::string> locators;
    bool json = false;
};

/// What one locator names. A time that a network does not tell is absent, like the size of a folder.
struct Status {
    std::string locator;
    FileType type = FileType::other;
    bool readOnly = false;
    std::optional<std::uint64_t> size;
    std::optional<std::int64_t> modified, changed, accessed;
};

using TimeOf = std::int64_t(const char*);

std::optional<std::int64_t> timeOf(const std::string& locator, TimeOf& ask) {
    const std::int64_t seconds = ask(locator.c_str());
    return seconds == KVFILETIME_NETWORK ? std::nullopt : std::optional(seconds);
}

/// Nothing, with the last error telling why, for what is not there.
std::optional<Status> statusOf(const std::string& locator) {
    kvOSSetLastError(0);
    const std::uint32_t attributes = kvOSGetFileAttributes(locator.c_str());
    const bool missing = attributes == 0 || (attributes == KVATTR_INVALID && isOnNetwork(locator));
    if (missing || redirected(locator).empty()) return std::nullopt;

    Status status;
    status.locator = withoutSecrets(locator);
    status.type = fileType(attributes);
    status.readOnly = isReadOnly(attributes);
    if (status.type == FileType::file) status.size = sizeOf(locator);
    status.modified = timeOf(locator, kvOSFileTimeModified);
    status.changed = timeOf(locator, kvOSFileTimeCreated);
    status.accessed = timeOf(locator, kvOSFileTimeAccessed);
    return status;
}

std::string sizeText(const Status& status) {
    if (!status.size) return "-";
    const std::string exact = std::to_string(*status.size) + " bytes";
    return *status.size < 1024 ? exact : humanSize(*status.size) + " (" + exact + ")";
}

std::string timeText(const std::optional<std::int64_t>& seconds) { return seconds ? localTime(*seconds) : "-"; }

std::string asTable(const Status& status) {
    Table table({Align::left, Align::left});
    table.add({"name", status.locator});
    table.add({"type", nameOf(status.type)});
    table.add({"size", sizeText(status)});
    table.add({"read-only", status.readOnly ? "yes" : "no"});
    table.add({"modified", timeText(status.modified)});
    table.add({"changed", timeText(status.changed)});
    table.add({"accessed", timeText(status.accessed)});
    return table.text();
}

nlohmann::ordered_json timeJson(const std::optional<std::int64_t>& seconds) {
    return seconds ? nlohmann::ordered_json(utcTime(*seconds)) : nlohmann::ordered_json();
}

nlohmann::ordered_json asJson(const Status& status) {
    return {{"name", status.locator},
            {"type", nameOf(status.type)},
            {"size", status.size ? nlohmann::ordered_json(*status.size) : nlohmann::ordered_json()},
            {"readOnly", status.readOnly},
            {"modified", timeJson(status.modified)},
            {"changed", timeJson(status.changed)},
            {"accessed", timeJson(status.accessed)}};
}

std::string shown(const std::vector<Status>& all, bool json) {
    std::string text;
    auto document = nlohmann::ordered_json::array();
    for (const Status& status : all) {
        if (json) {
            document.push_back(asJson(status));
        } else {
            text += (text.empty() ? "" : "\n") + asTable(status);
        }
    }
    return json ? jsonText(document) : text;
}

Exit stat(const Request& request) {
    std::vector<Status> all;
    for (const std::string& locator : request.locators) {
        if (const auto status = statusOf(locator)) {
            all.push_back(*status);
        } else {
            complainOf("find", locator);
        }
    }
    const Exit written = writeOut(shown(all, request.json));
    return all.size() == request.locators.size() ? written : Exit::failed;
}

}  // namespace

void declareStat(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("stat", "Show type, size, read-only state and times");
    command->footer("Example: kv stat --json clip.mov");
    auto request = std::make_shared<Request>();
    addPositional(*command, "LOCATOR", request->locators, "What to show");
    command->add_flag("--json", request->json, "Print one JSON array: exact bytes, times in UTC");
    command->callback([&chosen, request] { chosen = [request] { return stat(*request); }; });
}

}  // namespace kv::tool
