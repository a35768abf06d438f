// Playlists: any bytes as a playlist beside two small segments, taken in and read at any places.
//
// What must hold: the opening ends; lengths and starts add up; a read keeps to its buffer, and counts no more than was
// asked for.
#include "kvos/playlist.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "errlog.h"
#include "fuzz/input.h"
#include "kvos/file.h"
#include "kvos/memory.h"

namespace {

using kv::fuzz::must;

void makeFile(const std::string& path, std::string_view content) {
    std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

/// A folder of this process with the segments "a" and "b" in it.
const std::string& folder() {
    static const std::string path = [] {
        gdwOutputToStdDebug = 0;
        std::string text = (std::filesystem::temp_directory_path() / "fuzz-playlist-XXXXXX").string();
        must(mkdtemp(text.data()) != nullptr, "there is a scratch folder");
        makeFile(text + "/a", "0123456789");
        makeFile(text + "/b", std::string(5000, 'b'));
        return text;
    }();
    return path;
}

void checkSegments(kvM3U8List& list) {
    std::uint64_t total = 0;
    for (d_ListNode* node = d_ListHead(&list.list); node != nullptr; node = d_ListNext(node)) {
        const auto& segment = *reinterpret_cast<kvM3U8Segment*>(node);
        must(segment.qwStart == total, "a segment begins where the one ahead of it ends");
        total += segment.dwLength;
    }
    must(kvOSFileSizeM3U8(&list) == total, "the total is the sum of the lengths");
}

void readAround(kvM3U8List& list) {
    const std::uint64_t places[] = {0, 3, 10, list.qwTotal / 2, list.qwTotal, ~std::uint64_t{0}, 0};
    for (const std::uint64_t place : places) {
        kvOSSeekM3U8(&list, place);
        for (const std::uint32_t count : {7u, 4000u}) {
            kv::fuzz::ExactBuffer buffer{std::size_t{count}};
            std::uint32_t got = 0;
            kvOSReadM3U8(&list, buffer.data(), count, &got);
            must(got <= count, "no more comes than was asked for");
        }
    }
}

void discard(kvM3U8List* list) {
    while (d_ListNode* const node = d_ListRemoveHead(&list->list)) {
        auto* const segment = reinterpret_cast<kvM3U8Segment*>(node);
        kvOSCloseFile(segment->hFile);
        KVFree(segment->szPath);
        KVFree(segment);
    }
    kvOSCloseM3U8(list);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = folder() + "/list.m3u8";
    makeFile(path, {reinterpret_cast<const char*>(data), size});
    kvM3U8List* const list = kvOSOpenM3U8(path.c_str());
    if (list == nullptr) return 0;
    checkSegments(*list);
    readAround(*list);
    discard(list);
    return 0;
}
