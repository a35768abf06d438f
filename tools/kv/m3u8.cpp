// kv m3u8: an HLS playlist's segments, and their bytes one behind the other.
//
// The bytes come from the segments' own files: the library's read of a playlist passes over segments by its way of
// finding them.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/json_text.h"
#include "kv/open_file.h"
#include "kv/redirected.h"
#include "kv/secrets.h"
#include "kv/source.h"
#include "kv/standard_streams.h"
#include "kv/stated_offsets.h"
#include "kv/table.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/playlist.h"

namespace kv::tool {
namespace {

struct Request {
    std::string locator;
    bool json = false;
};

struct Segment {
    std::string path;  // empty where the playlist ended ahead of it
    double start_s;
    double duration_s;
    std::uint64_t bytes;
    std::uint64_t offset;  // in its file
};

// ---- taking it in ------------------------------------------------------------------------------------------------

struct ClosePlaylist {
    void operator()(kvM3U8List* playlist) const {
        while (d_ListNode* const node = d_ListRemoveHead(&playlist->list)) {
            auto* const segment = reinterpret_cast<kvM3U8Segment*>(node);
            KVFree(segment->szPath);
            KVFree(segment);
        }
        kvOSCloseM3U8(playlist);
    }
};

/// With a folder ahead of a lone name, which the library would take for the folder itself.
std::string withFolder(const std::string& locator) {
    if (isOnNetwork(locator) || locator.empty() || locator.find('/', 1) != std::string::npos) return locator;
    return (locator.starts_with('/') ? "/." : "./") + locator;
}

/// Finds where segments begin in their files. What the playlist does not say, the library fills in with the place in
/// the whole: that is right for ranges of one file that follow each other from its start, and for nothing else.
class Offsets {
public:
    explicit Offsets(const std::string& playlist) : playlist_(playlist) {}

    std::uint64_t of(const kvM3U8Segment& segment, const std::string& path, const std::vector<Segment>& before) {
        const std::uint64_t given = segment.qwFileOffset;
        if (given != segment.qwStart || before.empty()) return given;
        if (sizeOf(path) == segment.dwLength) return 0;
        const Segment& last = before.back();
        const std::uint64_t behindLast = last.offset + last.bytes;
        if (last.path != path || behindLast == given) return given;
        return isStated(before.size()) ? given : behindLast;
    }

private:
    bool isStated(std::size_t segment) {
        if (!isLookedUp_) stated_ = statedOffsets(playlist_);
        isLookedUp_ = true;
        return segment < stated_.size() && stated_[segment];
    }

    const std::string& playlist_;
    std::vector<bool> stated_;
    bool isLookedUp_ = false;  // only where it matters
};

/// Nothing on failure, which is told.
std::vector<Segment> segmentsOf(const std::string& locator) {
    const std::string path = withFolder(locator);
    kvOSSetLastError(0);
    const std::unique_ptr<kvM3U8List, ClosePlaylist> playlist(kvOSOpenM3U8(path.c_str()));
    const std::uint32_t error = kvOSGetLastError();
    std::vector<Segment> segments;
    if (playlist == nullptr) {
        error == 0 ? complain("'" + locator + "' is no playlist") : complainOf("open", locator, error);
        return segments;
    }
    if (error != 0) {  // what could be read of it must not pass for the whole
        complainOf("read", locator, error);
        return segments;
    }
    Offsets offsets(path);
    for (d_ListNode* node = d_ListHead(&playlist->list); node != nullptr; node = d_ListNext(node)) {
        const auto& segment = *reinterpret_cast<kvM3U8Segment*>(node);
        const std::string file = segment.szPath == nullptr ? "" : segment.szPath;
        segments.push_back({.path = file,
                            .start_s = segment.dStartTime,
                            .duration_s = segment.dDuration,
                            .bytes = segment.dwLength,
                            .offset = offsets.of(segment, file, segments)});
    }
    if (segments.empty()) complain("'" + locator + "' lists no segments");
    return segments;
}

// ---- the table ---------------------------------------------------------------------------------------------------

std::string secondsText(double seconds) {
    char text[400];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

Segment totalOf(const std::vector<Segment>& segments) {
    Segment total{};
    for (const Segment& segment : segments) {
        total.duration_s += segment.duration_s;
        total.bytes += segment.bytes;
    }
    return total;
}

std::string asTable(const std::vector<Segment>& segments) {
    Table table({Align::right, Align::right, Align::right, Align::right, Align::left});
    table.add({"START", "SECONDS", "BYTES", "OFFSET", "SEGMENT"});
    for (const Segment& segment : segments) {
        table.add({secondsText(segment.start_s), secondsText(segment.duration_s), std::to_string(segment.bytes),
                   std::to_string(segment.offset), segment.path.empty() ? "-" : withoutSecrets(segment.path)});
    }
    const Segment total = totalOf(segments);
    table.add(
        {"", secondsText(total.duration_s), std::to_string(total.bytes), "", "all " + std::to_string(segments.size())});
    return table.text();
}

std::string asJson(const std::vector<Segment>& segments) {
    auto list = nlohmann::ordered_json::array();
    for (const Segment& segment : segments) {
        list.push_back({{"path", withoutSecrets(segment.path)},
                        {"start", segment.start_s},
                        {"seconds", segment.duration_s},
                        {"bytes", segment.bytes},
                        {"offset", segment.offset}});
    }
    const Segment total = totalOf(segments);
    return jsonText({{"segments", list}, {"seconds", total.duration_s}, {"bytes", total.bytes}});
}

// ---- the commands ------------------------------------------------------------------------------------------------

Exit info(const Request& request) {
    const auto segments = segmentsOf(request.locator);
    if (segments.empty()) return Exit::failed;
    return writeOut(request.json ? asJson(segments) : asTable(segments));
}

Exit writeSegment(const Segment& segment) {
    auto source = Source::open(segment.path);
    // What has no length here is a file that does not tell its size, or one of 4 GiB and more: all of it.
    if (!source || (segment.bytes != 0 && !source->narrow(segment.offset, segment.bytes))) return Exit::failed;
    for (;;) {
        const auto block = source->next();
        if (!block) return Exit::failed;
        if (block->empty()) return Exit::ok;
        if (const Exit written = writeOut({block->data(), block->size()}); written != Exit::ok) return written;
    }
}

Exit cat(const Request& request) {
    const auto segments = segmentsOf(request.locator);
    if (segments.empty()) return Exit::failed;
    for (const Segment& segment : segments) {
        if (segment.path.empty()) {
            complain("'" + request.locator + "' ends ahead of its last segment's name");
            return Exit::failed;
        }
        if (const Exit written = writeSegment(segment); written != Exit::ok) return written;
    }
    return Exit::ok;
}

}  // namespace

void declareM3u8(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("m3u8", "Show an HLS playlist, or write the bytes of its segments");
    command->require_subcommand(1);
    command->footer("Example: kv m3u8 cat http://media/clip/index.m3u8 > clip.ts");
    command->get_formatter()->label("SUBCOMMAND", "COMMAND");
    auto request = std::make_shared<Request>();

    auto* show = command->add_subcommand("info", "List the segments: seconds, bytes, place in their files");
    addPositional(*show, "PLAYLIST", request->locator, "Playlist with segments beside it");
    show->add_flag("--json", request->json, "Print one JSON object");
    show->callback([&chosen, request] { chosen = [request] { return info(*request); }; });

    auto* write = command->add_subcommand("cat", "Write all segments to standard output, one behind the other");
    addPositional(*write, "PLAYLIST", request->locator, "Playlist with segments beside it");
    write->callback([&chosen, request] { chosen = [request] { return cat(*request); }; });
}

}  // namespace kv::tool
