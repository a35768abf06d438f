#include "demo/network.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "demo/frames.h"
#include "demo/timed_file.h"
#include "errlog.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/playlist.h"
#include "servers/scripted_server.h"

namespace demo {
namespace {

constexpr std::uint32_t kMostFrames = 60;  // the server holds them in memory

using Documents = std::map<std::string, std::string>;

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The clip, its two halves, and a playlist of them.
Documents documentsOf(const Clip& clip) {
    Documents documents;
    std::string& whole = documents["/clip.yuv"];
    whole = contentOf(clip.path("clip.yuv")).substr(0, clip.bytes());
    const std::size_t half = (clip.frames + 1) / 2 * clip.size.bytes();
    documents["/first.yuv"] = whole.substr(0, half);
    documents["/second.yuv"] = whole.substr(half);
    documents["/clip.m3u8"] = "#EXTM3U\n#EXTINF:1.0,\nfirst.yuv\n#EXTINF:1.0,\nsecond.yuv\n#EXT-X-ENDLIST\n";
    return documents;
}

kvtest::Answer serve(const Documents& documents, const kvtest::Request& request) {
    const auto found = documents.find(request.target);
    if (found != documents.end()) return kvtest::answerWithRange(request, found->second);
    kvtest::Answer missing;
    missing.status = 404;
    missing.reason = "Not Found";
    return missing;
}

void readInOrder(const Clip& clip, const std::string& url, Report& report) {
    TimedFile file(url, TimedFile::Use::read);
    Frame frame(clip.size.bytes());
    std::uint32_t right = 0;
    for (std::uint32_t number = 0; number < clip.frames; ++number) {
        if (file.read(frame) && isFrame(number, frame)) ++right;
    }
    report.line("read in order", clip.bytes(), file.takeTime(), countText(right, clip.frames), right == clip.frames);
}

void readInSmallCalls(const Clip& clip, const std::string& url, const kvtest::ScriptedServer& server, Report& report) {
    constexpr std::size_t kCall = 65536;
    const std::size_t before = server.requests().size();
    TimedFile file(url, TimedFile::Use::read);
    Frame block(kCall);
    std::uint64_t got = 0;
    while (got < clip.bytes()) {
        const std::size_t some = file.readSome(std::span(block).first(std::min(kCall, clip.bytes() - got)));
        if (some == 0) break;
        got += some;
    }
    const std::string requests = std::to_string(server.requests().size() - before) + " requests";
    report.line("read in calls of 64 KiB", got, file.takeTime(), requests, got == clip.bytes());
}

/// The close leaves the segments, which are the caller's to take off the list.
struct ClosePlaylist {
    void operator()(kvM3U8List* list) const {
        while (auto* const segment = reinterpret_cast<kvM3U8Segment*>(d_ListRemoveHead(&list->list))) {
            kvOSCloseFile(segment->hFile);
            KVFree(segment->szPath);
            KVFree(segment);
        }
        kvOSCloseM3U8(list);
    }
};

void readPlaylist(const Clip& clip, const std::string& url, Report& report) {
    Seconds time{};
    const std::unique_ptr<kvM3U8List, ClosePlaylist> list(timed(time, [&] { return kvOSOpenM3U8(url.c_str()); }));
    Frame all(clip.bytes());
    std::uint32_t got = 0;
    const bool read = list != nullptr && kvOSFileSizeM3U8(list.get()) == clip.bytes() &&
                      timed(time, [&] {
                          return kvOSReadM3U8(list.get(), all.data(), static_cast<std::uint32_t>(all.size()), &got);
                      }) == 1;
    std::uint32_t right = 0;
    for (std::uint32_t number = 0; read && number < clip.frames; ++number) {
        if (isFrame(number, std::span(all).subspan(number * clip.size.bytes(), clip.size.bytes()))) ++right;
    }
    report.line("read a playlist of two pieces", got, time, countText(right, clip.frames), right == clip.frames);
}

}  // namespace

void showNetwork(const Clip& whole, Report& report) {
    Clip clip = whole;
    clip.frames = std::min(clip.frames, kMostFrames);
    const Documents documents = documentsOf(clip);
    const kvtest::ScriptedServer server([&](const kvtest::Request& request) { return serve(documents, request); });
    report.heading("A web server, " + server.url(""));
    ErrLogSetMode(KVERRLOG_MODE_NO_STANDARD_ERROR, nullptr);  // reads tell their requests there
    readInOrder(clip, server.url("/clip.yuv"), report);
    readInSmallCalls(clip, server.url("/clip.yuv"), server, report);
    readPlaylist(clip, server.url("/clip.m3u8"), report);
    ErrLogSetMode(KVERRLOG_MODE_STANDARD_ERROR, nullptr);
}

}  // namespace demo
