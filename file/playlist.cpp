// Playlists: opening, closing, and the grammar.
//
// Between segments a line is looked at in pieces of 99 bytes, within one in pieces of 4095; each piece counts as a line
// of its own.
#include "kvos/playlist.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "border/guard.h"
#include "border/text.h"
#include "file/open_reading.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/naming.h"

namespace kv::file {
namespace {

constexpr std::string_view kHeader = "#EXTM3U";
constexpr std::string_view kSegmentTag = "#EXTINF";
constexpr std::string_view kRangeTag = "#EXT-X-BYTERANGE";

constexpr std::uint32_t kHeaderRoom = 10;
constexpr std::uint32_t kSearchRoom = 100;
constexpr std::uint32_t kSegmentRoom = 4096;

// ---- what the playlist is made of --------------------------------------------------------------------------------

struct FreeBlock {
    void operator()(void* block) const { KVFree(block); }
};

/// Memory that a caller frees with KVFree. Zeroed.
template <class Record>
std::unique_ptr<Record, FreeBlock> newBlock(std::size_t size = sizeof(Record)) {
    void* const block =
        size > std::numeric_limits<std::uint32_t>::max() ? nullptr : KVAlloc(static_cast<std::uint32_t>(size));
    if (block == nullptr) throw std::bad_alloc();
    std::memset(block, 0, size);
    return std::unique_ptr<Record, FreeBlock>(static_cast<Record*>(block));
}

using Segment = std::unique_ptr<kvM3U8Segment, FreeBlock>;

/// A playlist that is not yet the caller's goes with all its segments.
struct DiscardPlaylist {
    void operator()(kvM3U8List* playlist) const {
        while (d_ListNode* const node = d_ListRemoveHead(&playlist->list)) {
            const Segment segment(reinterpret_cast<kvM3U8Segment*>(node));
            KVFree(segment->szPath);
        }
        kvOSCloseM3U8(playlist);
    }
};

// ---- lines -------------------------------------------------------------------------------------------------------

class Lines {
public:
    explicit Lines(std::int64_t file) : file_(file) {}
    ~Lines() { kvOSCloseFile(file_); }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    /// The error number of the fault that ended the lines; 0 where there was none.
    int fault() const { return fault_; }

    bool isAtEnd() const { return isOver_ || kvOSfeof(file_) != 0; }

    /// The next line, or the next piece of it, valid until the next call. Nothing at the end and after a fault.
    std::optional<std::string_view> next(std::uint32_t room) {
        if (isOver_) return std::nullopt;
        const std::int64_t before = kvOSTell(file_);
        errno = 0;
        const char* const line = kvOSfgets(buffer_, room, file_);
        if (line == nullptr && kvOSfeof(file_) == 0) fault_ = errno;
        // Without an ending behind it a zero byte holds the position where it is, for ever.
        isOver_ = line == nullptr || kvOSTell(file_) == before;
        if (isOver_) return std::nullopt;
        return line;
    }

private:
    std::int64_t file_;
    bool isOver_ = false;
    int fault_ = 0;
    char buffer_[kSegmentRoom];
};

/// What stands behind a tag and its colon, up to the terminator; empty where the line ends ahead of that.
const char* behind(std::string_view tag, std::string_view line) {
    return line.data() + std::min(tag.size() + 1, line.size());
}

// ---- segments ----------------------------------------------------------------------------------------------------

/// A length that does not fit counts as none.
std::uint32_t lengthOf(std::uint64_t bytes) {
    return bytes > std::numeric_limits<std::uint32_t>::max() ? 0 : static_cast<std::uint32_t>(bytes);
}

void takeRange(kvM3U8Segment& segment, std::string_view line) {
    segment.dwLength = lengthOf(std::strtoul(behind(kRangeTag, line), nullptr, 0));
    const std::size_t at = line.find('@');
    if (at != std::string_view::npos) segment.qwFileOffset = std::strtoull(line.data() + at + 1, nullptr, 0);
}

/// The line with the segment's path, the ranges ahead of it taken; nothing where the lines end.
std::optional<std::string_view> findPath(Lines& lines, kvM3U8Segment& segment) {
    while (const auto line = lines.next(kSegmentRoom)) {
        if (!line->starts_with('#')) return line;
        if (line->starts_with(kRangeTag)) takeRange(segment, *line);
    }
    return std::nullopt;
}

char* copyOf(const std::string& text) {
    auto copy = newBlock<char>(text.size() + 1);
    std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    return copy.release();
}

std::string folderOf(const char* path) {
    border::PathBuffer drive;
    border::PathBuffer folder;
    kvOSSplitPath(path, drive, folder, nullptr, nullptr);
    const std::string whole = std::string(drive) + folder;
    return whole.ends_with('/') ? whole : whole + "/";
}

class Reader {
public:
    Reader(Lines& lines, std::string folder, kvM3U8List& playlist)
        : lines_(lines), folder_(std::move(folder)), playlist_(playlist) {}

    void readAll() {
        while (!lines_.isAtEnd()) {
            const auto line = findTag();
            if (!line) return;
            readSegment(*line);
        }
    }

private:
    std::optional<std::string_view> findTag() {
        while (const auto line = lines_.next(kSearchRoom)) {
            if (line->starts_with(kSegmentTag)) return line;
        }
        return std::nullopt;
    }

    void readSegment(std::string_view tag) {
        Segment segment = newBlock<kvM3U8Segment>();
        segment->dDuration = std::atof(behind(kSegmentTag, tag));
        segment->qwStart = segment->qwFileOffset = playlist_.qwTotal;
        if (const auto line = findPath(lines_, *segment)) {
            segment->szPath = copyOf(folder_ + std::string(*line));
            segment->dStartTime = time_s_;
            if (segment->dwLength == 0) segment->dwLength = lengthOf(kvOSGetFileSizeName(segment->szPath));
        }
        time_s_ += segment->dDuration;
        playlist_.qwTotal += segment->dwLength;
        d_ListAddTail(&playlist_.list, &segment.release()->node);
    }

    Lines& lines_;
    std::string folder_;
    kvM3U8List& playlist_;
    double time_s_ = 0;
};

kvM3U8List* openPlaylist(const char* path) {
    const std::int64_t file = openForReading(path);
    if (file == KVFILE_INVALID) return nullptr;
    std::unique_ptr<kvM3U8List, DiscardPlaylist> playlist;
    int fault = 0;
    {
        Lines lines(file);
        // No line at all passes for a playlist, of nothing. Meant.
        const auto header = lines.next(kHeaderRoom);
        if (!header || header->starts_with(kHeader)) {
            playlist.reset(newBlock<kvM3U8List>().release());
            d_ListInit(&playlist->list);
            Reader(lines, folderOf(path), *playlist).readAll();
        }
        fault = lines.fault();
    }
    errno = fault;  // all that tells a playlist that was cut off from a whole one
    return playlist.release();
}

}  // namespace
}  // namespace kv::file

kvM3U8List* kvOSOpenM3U8(const char* path) {
    if (path == nullptr) {
        errno = ENOENT;
        return nullptr;
    }
    return kv::border::atBorder<kvM3U8List*>(nullptr, [path] { return kv::file::openPlaylist(path); });
}

uint32_t kvOSCloseM3U8(kvM3U8List* pList) {
    if (pList == nullptr) return 0;
    d_ListClose(&pList->list);
    KVFree(pList);
    return 0;
}
