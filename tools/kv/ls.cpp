// kv ls: what a pattern finds, or what a folder holds.
//
// Sizes come from the files themselves and not from the enumeration, which gives 32 bits of them only.
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/file_type.h"
#include "kv/find_pattern.h"
#include "kv/human_size.h"
#include "kv/json_text.h"
#include "kv/moment.h"
#include "kv/open_file.h"
#include "kv/redirected.h"
#include "kv/standard_streams.h"
#include "kv/stored_listing.h"
#include "kv/table.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/find.h"
#include "kvos/locator.h"

namespace kv::tool {
namespace {

struct Request {
    std::string pattern;
    bool hidden = false;
    bool json = false;
};

struct Entry {
    std::string name;
    FileType type;
    bool readOnly;
    std::optional<std::uint64_t> size;
    std::optional<std::int64_t> modified, changed, accessed;  // absent where a store does not tell them
};

// ---- the entries -------------------------------------------------------------------------------------------------

class Listing {
public:
    /// `folder` is what the names found are added to, with its "/", to look at the files themselves.
    Listing(const std::string& pattern, std::string folder, bool hidden)
        : folder_(std::move(folder)), hidden_(hidden), find_(kvOSFindFirstFile(pattern.c_str(), &data_)) {}
    ~Listing() {
        if (isOpen()) kvOSFindClose(find_);
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    bool isOpen() const { return find_ != KVFIND_INVALID; }

    std::vector<Entry> entries() {
        std::vector<Entry> found;
        std::set<std::string> seen;  // a pattern can find one file in two ways
        do {
            if (isWanted(data_.szName) && seen.insert(data_.szName).second) found.push_back(entry());
        } while (kvOSFindNextFile(find_, &data_) != 0);
        return found;
    }

private:
    bool isWanted(std::string_view name) const {
        if (name == "." || name == ".." || name.empty()) return false;
        return hidden_ || !name.starts_with('.');
    }

    Entry entry() const {
        const FileType type = fileType(data_.dwAttributes);
        return {.name = data_.szName,
                .type = type,
                .readOnly = isReadOnly(data_.dwAttributes),
                .size = type == FileType::file ? sizeOf(folder_ + data_.szName) : std::nullopt,
                .modified = secondsOf(data_.ftWrite),
                .changed = secondsOf(data_.ftCreation),
                .accessed = secondsOf(data_.ftAccess)};
    }

    kvOSFindData data_{};
    std::string folder_;
    bool hidden_;
    std::int64_t find_;  // behind the entry, which is filled while the handle is made
};

// ---- the two ways to show them -----------------------------------------------------------------------------------

std::string asTable(const std::vector<Entry>& entries) {
    if (entries.empty()) return {};
    Table table({Align::left, Align::right, Align::left, Align::left});
    table.add({"TYPE", "SIZE", "MODIFIED", "NAME"});
    for (const Entry& entry : entries) {
        table.add(
            {nameOf(entry.type), humanSize(entry.size), entry.modified ? localTime(*entry.modified) : "-", entry.name});
    }
    return table.text();
}

nlohmann::ordered_json timeJson(const std::optional<std::int64_t>& seconds) {
    return seconds ? nlohmann::ordered_json(utcTime(*seconds)) : nlohmann::ordered_json();
}

std::string asJson(const std::vector<Entry>& entries) {
    auto document = nlohmann::ordered_json::array();
    for (const Entry& entry : entries) {
        document.push_back({{"name", entry.name},
                            {"type", nameOf(entry.type)},
                            {"size", entry.size ? nlohmann::ordered_json(*entry.size) : nlohmann::ordered_json()},
                            {"readOnly", entry.readOnly},
                            {"modified", timeJson(entry.modified)},
                            {"changed", timeJson(entry.changed)},
                            {"accessed", timeJson(entry.accessed)}});
    }
    return jsonText(document);
}

// ---- the command -------------------------------------------------------------------------------------------------

Exit show(const std::vector<Entry>& entries, bool json) { return writeOut(json ? asJson(entries) : asTable(entries)); }

Exit tellNothing(const std::string& why, const Request& request) {
    complain("cannot list '" + request.pattern + "': " + why);
    if (request.json) writeOut(jsonText(nlohmann::ordered_json::array()));
    return Exit::failed;
}

/// An empty folder is a listing too, of nothing.
Exit listFolder(const Request& request) {
    const std::string pattern = withFolder(insideOf(withoutQuotes(redirected(request.pattern))));
    const std::string folder = insideOf(request.pattern);
    Listing listing(pattern, folder.substr(0, folder.size() - 1), request.hidden);
    if (listing.isOpen()) return show(listing.entries(), request.json);
    return tellNothing("the folder can't be read, or there is a * or ? in its path", request);
}

Exit listPattern(const Request& request) {
    const std::size_t folderEnd = request.pattern.rfind('/') + 1;  // 0 without a folder
    const bool hidden = request.hidden || request.pattern.substr(folderEnd).starts_with('.');
    kvOSSetLastError(0);
    const std::string pattern = redirected(request.pattern);
    if (pattern.empty() && kvOSGetLastError() != 0) return tellNothing(reasonOf(kvOSGetLastError()), request);
    Listing listing(withFolder(withName(pattern)), request.pattern.substr(0, folderEnd), hidden);
    if (!listing.isOpen()) return tellNothing(reasonOf(kvOSGetLastError()), request);
    const auto entries = listing.entries();
    return entries.empty() ? tellNothing("nothing found", request) : show(entries, request.json);
}

Exit listObjects(const Request& request) {
    const StoredListing listing = listStore(redirected(request.pattern));
    if (listing.entries.empty()) return tellNothing(listing.whyNot, request);
    std::vector<Entry> entries;
    for (const StoredEntry& stored : listing.entries) {
        if (stored.name.starts_with('.') && !request.hidden) continue;
        entries.push_back({.name = stored.name,
                           .type = stored.isFolder ? FileType::folder : FileType::file,
                           .readOnly = false,
                           .size = stored.isFolder ? std::nullopt : std::optional(stored.size),
                           .modified = {},
                           .changed = {},
                           .accessed = {}});
    }
    const Exit shown = show(entries, request.json);
    if (listing.whyNot.empty()) return shown;
    complain("'" + request.pattern + "' is not listed whole: " + listing.whyNot);
    return Exit::failed;
}

Exit list(const Request& request) {
    if (isUrl(request.pattern)) return tellNothing("a URL has no listing", request);
    if (isObject(request.pattern)) return listObjects(request);
    const bool isFolder = fileType(kvOSGetFileAttributes(request.pattern.c_str())) == FileType::folder;
    return isFolder ? listFolder(request) : listPattern(request);
}

}  // namespace

void declareLs(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("ls", "List what a pattern finds, or what a folder holds");
    command->footer("Example: kv ls '/media/clip????.tga'");
    auto request = std::make_shared<Request>();
    addPositional(*command, "PATTERN", request->pattern, "Folder, or a name in one with * and ? in it");
    command->add_flag("-a,--all", request->hidden, "Hidden entries as well; never \".\" and \"..\"");
    command->add_flag("--json", request->json, "Print one JSON array: exact bytes, times in UTC");
    command->callback([&chosen, request] { chosen = [request] { return list(*request); }; });
}

}  // namespace kv::tool
