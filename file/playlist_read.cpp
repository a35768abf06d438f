// Reading a playlist as one file.
//
// The walk stops at the first segment that does not hold the position, the answer of a seek is not looked at, and the
// second half of a read counts the first half's bytes. All three are meant, and none is to be turned around.
#include <algorithm>
#include <cstdint>

#include "border/guard.h"
#include "file/open_reading.h"
#include "kvos/file.h"
#include "kvos/playlist.h"

namespace kv::file {
namespace {

bool holds(const kvM3U8Segment& segment, std::uint64_t position) {
    return position >= segment.qwStart && position < segment.qwStart + segment.dwLength;
}

bool isOpen(const kvM3U8Segment& segment) { return segment.hFile != 0 && segment.hFile != KVFILE_INVALID; }

void closeSegment(kvM3U8Segment& segment) {
    if (isOpen(segment)) kvOSCloseFile(segment.hFile);
    segment.hFile = KVFILE_INVALID;
}

bool openSegment(kvM3U8Segment& segment) {
    if (!isOpen(segment)) segment.hFile = openForReading(segment.szPath);
    return isOpen(segment);
}

using Neighbour = d_ListNode*(d_ListNode*);

/// Stands on the neighbour. Without one it stays where it is, or nowhere if the segment is on no list any more.
bool step(kvM3U8List& playlist, Neighbour& neighbour) {
    d_ListNode& here = playlist.pCurrent->node;
    if (d_ListParent(&here) == nullptr) {
        playlist.pCurrent = nullptr;
        return false;
    }
    d_ListNode* const next = neighbour(&here);
    if (next == nullptr) return false;
    playlist.pCurrent = reinterpret_cast<kvM3U8Segment*>(next);
    return true;
}

/// False where the list ends: with the last neighbour holding the position, or with the position behind all of them.
bool walk(kvM3U8List& playlist) {
    closeSegment(*playlist.pCurrent);
    Neighbour& neighbour = playlist.qwPos < playlist.pCurrent->qwStart ? d_ListPrev : d_ListNext;
    const bool isBehindAll = playlist.qwPos >= playlist.qwTotal;
    do {
        if (!step(playlist, neighbour)) return false;
    } while (isBehindAll || holds(*playlist.pCurrent, playlist.qwPos));
    return true;
}

/// Stands on the segment to read from.
bool findSegment(kvM3U8List& playlist) {
    if (playlist.pCurrent == nullptr) playlist.pCurrent = reinterpret_cast<kvM3U8Segment*>(d_ListHead(&playlist.list));
    if (playlist.pCurrent == nullptr) return false;
    return holds(*playlist.pCurrent, playlist.qwPos) || walk(playlist);
}

/// What is left of a read behind the end of the current segment, from the start of the next one's file.
std::uint32_t readNext(kvM3U8List& playlist, char* buffer, std::uint32_t count, std::uint32_t first,
                       std::uint32_t& read) {
    closeSegment(*playlist.pCurrent);
    if (!step(playlist, d_ListNext)) return 0;
    kvM3U8Segment& segment = *playlist.pCurrent;
    if (!openSegment(segment)) return 0;
    std::uint32_t second = 0;
    kvOSSeek(segment.hFile, 0);
    kvOSReadFile(segment.hFile, buffer, std::min(count, segment.dwLength), &second, nullptr);
    playlist.qwPos += first;  // and not second. Meant.
    read += second;
    return 1;
}

std::uint32_t readAcross(kvM3U8List& playlist, char* buffer, std::uint32_t count, std::uint32_t& read) {
    if (!findSegment(playlist)) return 0;
    kvM3U8Segment& segment = *playlist.pCurrent;
    if (!openSegment(segment)) return 0;
    const std::uint64_t offset = playlist.qwPos - segment.qwStart + segment.qwFileOffset;
    const auto amount = static_cast<std::uint32_t>(std::min<std::uint64_t>(segment.dwLength - offset, count));
    kvOSSeek(segment.hFile, static_cast<std::int64_t>(offset));  // where it refuses, reading goes on from where it is
    const std::uint32_t result = kvOSReadFile(segment.hFile, buffer, amount, &read, nullptr);
    if (result == 0) return result;
    playlist.qwPos += read;
    if (amount == count) return 1;
    return readNext(playlist, buffer + read, count - amount, read, read);
}

}  // namespace
}  // namespace kv::file

std::uint64_t kvOSFileSizeM3U8(kvM3U8List* pList) { return pList == nullptr ? 0 : pList->qwTotal; }

std::uint64_t kvOSSeekM3U8(kvM3U8List* pList, std::uint64_t qwPosition) {
    if (pList == nullptr) return ~std::uint64_t{0};
    return pList->qwPos = qwPosition;
}

std::uint64_t kvOSTellM3U8(kvM3U8List* pList) { return pList == nullptr ? ~std::uint64_t{0} : pList->qwPos; }

std::uint32_t kvOSReadM3U8(kvM3U8List* pList, void* pBuffer, std::uint64_t qwCount, std::uint32_t* pdwRead) {
    std::uint32_t read = 0;
    std::uint32_t result = 0;
    if (pList != nullptr) {
        const auto count = static_cast<std::uint32_t>(qwCount);
        result = kv::file::readAcross(*pList, static_cast<char*>(pBuffer), count, read);
    }
    if (pdwRead != nullptr) *pdwRead = read;
    return result;
}
