// kv audio: the sound files beside a clip, and the convention that they are named by.
//
// The library tells conventions by bits, some of which several share. What a file of each would be called is known, so
// the files that are there settle which ones are meant.
#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/find_pattern.h"
#include "kv/json_text.h"
#include "kv/standard_streams.h"
#include "kv/table.h"
#include "kvos/attributes.h"
#include "kvos/media_names.h"

namespace kv::tool {
namespace {

struct Request {
    std::string clip;
    std::vector<std::string> extensions{".wav", ".aif", ".aiff"};
    bool json = false;
};

struct Convention {
    std::uint32_t bits;
    const char* name;
    std::vector<std::string_view> suffixes;  // the first one that is there counts alone where `alone` says so
    bool alone = false;
};

const std::vector<Convention> kBesideClip{
    {KVAUDIO_SINGLE, "single", {""}},
    {KVAUDIO_FIRST, "first of a pair (.a1)", {".a1", ".A1"}},
    {KVAUDIO_SECOND, "second of a pair (.a2)", {".a2", ".A2"}},
    {KVAUDIO_FIRST_BARE, "first of a pair (a1)", {"a1"}},
    {KVAUDIO_SECOND_BARE, "second of a pair (a2)", {"a2"}},
    {KVAUDIO_BOTH, "both of a pair (.aa)", {".aa", ".AA"}, true},
    {KVAUDIO_NUMBERED, "pair (_1, _2)", {"_1", "_2"}},
    {KVAUDIO_SIDES, "left and right (.l, .r)", {".r", ".l", ".R", ".L"}},
    {KVAUDIO_1234, "channels 1 to 4", {".A1234"}},
    {KVAUDIO_12, "channels 1 and 2", {".A12"}},
    {KVAUDIO_34, "channels 3 and 4", {".A34"}},
    {KVAUDIO_56, "channels 5 and 6", {".A56"}},
    {KVAUDIO_78, "channels 7 and 8", {".A78"}},
};

const std::vector<Convention> kInFolder{
    {KVAUDIO_FOLDER_12, "channels 1 and 2 of the folder", {"audio12"}},
    {KVAUDIO_FOLDER_34, "channels 3 and 4 of the folder", {"audio34"}},
    {KVAUDIO_FOLDER_56, "channels 5 and 6 of the folder", {"audio56"}},
    {KVAUDIO_FOLDER_78, "channels 7 and 8 of the folder", {"audio78"}},
};

struct SoundFile {
    std::string convention, path;
};

/// What the search for one extension found.
struct Found {
    std::string extension;
    std::uint32_t mask;
    std::vector<SoundFile> files;
};

void collect(Found& found, const std::vector<Convention>& conventions, const std::string& base) {
    for (const Convention& convention : conventions) {
        if ((found.mask & convention.bits) != convention.bits) continue;
        for (const std::string_view suffix : convention.suffixes) {
            const std::string path = base + std::string(suffix) + found.extension;
            if (kvOSFileExists(path.c_str()) == 0) continue;
            found.files.push_back({convention.name, path});
            if (convention.alone) break;
        }
    }
}

/// The library's base is the folder where only that tells; the two are told apart by the final "/".
Found search(const std::string& clip, const std::string& extension) {
    char base[4096] = "";
    Found found{extension, FindAudioForVideo(clip.c_str(), extension.c_str(), base), {}};
    if (base[0] == '\0') errno = ENAMETOOLONG;
    const std::string beside = base;
    collect(found, kBesideClip, beside);
    collect(found, kInFolder, beside.substr(0, beside.rfind('/') + 1));
    return found;
}

std::string asTable(const std::vector<Found>& all) {
    Table table({Align::left, Align::left});
    table.add({"CONVENTION", "FILE"});
    for (const Found& found : all) {
        for (const SoundFile& file : found.files) table.add({file.convention, file.path});
    }
    return table.text();
}

std::string asJson(const std::vector<Found>& all) {
    auto document = nlohmann::ordered_json::array();
    for (const Found& found : all) {
        auto files = nlohmann::ordered_json::array();
        for (const SoundFile& file : found.files) {
            files.push_back({{"convention", file.convention}, {"path", file.path}});
        }
        document.push_back({{"extension", found.extension}, {"mask", found.mask}, {"files", files}});
    }
    return jsonText(document);
}

Exit show(const Request& request) {
    const std::string clip = withFolder(request.clip);
    std::vector<Found> all;
    errno = 0;
    for (const std::string& extension : request.extensions) {
        Found found = search(clip, extension);
        if (found.mask != 0) all.push_back(std::move(found));
    }
    if (all.empty() && errno == ENAMETOOLONG) {
        complainOf("look beside", request.clip);
    } else if (all.empty()) {
        complain("no audio beside '" + request.clip + "'");
    }
    if (request.json) {
        const Exit written = writeOut(asJson(all));
        return all.empty() ? Exit::failed : written;
    }
    return all.empty() ? Exit::failed : writeOut(asTable(all));
}

}  // namespace

void declareAudio(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("audio", "Find the sound files that belong to a video file, by their names");
    command->footer("Example: kv audio /media/clip.mov");
    auto request = std::make_shared<Request>();
    addPositional(*command, "CLIP", request->clip, "Path of the video file, with or without its extension");
    addText(*command, "-e,--extension", request->extensions, "Of the sound files; .wav, .aif and .aiff unless told")
        ->allow_extra_args(false)
        ->type_name("EXT");
    command->add_flag("--json", request->json, "Print one JSON array");
    command->callback([&chosen, request] { chosen = [request] { return show(*request); }; });
}

}  // namespace kv::tool
