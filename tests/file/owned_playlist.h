// A playlist that goes with everything that its close leaves behind.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/playlist.h"

namespace kvtest {

class OwnedPlaylist {
public:
    explicit OwnedPlaylist(const std::string& path) : list_(kvOSOpenM3U8(path.c_str())) {}
    ~OwnedPlaylist() {
        if (list_ == nullptr) return;
        while (d_ListNode* const node = d_ListRemoveHead(&list_->list)) release(node);
        kvOSCloseM3U8(list_);
    }
    OwnedPlaylist(const OwnedPlaylist&) = delete;
    OwnedPlaylist& operator=(const OwnedPlaylist&) = delete;

    static void release(d_ListNode* node) {
        auto* const segment = reinterpret_cast<kvM3U8Segment*>(node);
        kvOSCloseFile(segment->hFile);
        KVFree(segment->szPath);
        KVFree(segment);
    }

    bool isOpen() const { return list_ != nullptr; }
    kvM3U8List* get() const { return list_; }
    kvM3U8List* operator->() const { return list_; }

    std::vector<kvM3U8Segment*> segments() const {
        std::vector<kvM3U8Segment*> all;
        for (d_ListNode* node = d_ListHead(&list_->list); node != nullptr; node = d_ListNext(node)) {
            all.push_back(reinterpret_cast<kvM3U8Segment*>(node));
        }
        return all;
    }

    struct Read {
        std::uint32_t result;
        std::string bytes;
    };
    Read read(std::uint64_t count) const {
        std::string text(count & 0xFFFFFFFF, '?');
        std::uint32_t got = 0;
        const std::uint32_t result = kvOSReadM3U8(list_, text.data(), count, &got);
        text.resize(got);
        return {result, text};
    }

private:
    kvM3U8List* list_;
};

}  // namespace kvtest
