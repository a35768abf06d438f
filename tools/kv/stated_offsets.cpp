// Lines are taken in pieces of the library's own lengths, so that both see the same segments.
#include "kv/stated_offsets.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "kv/open_file.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kHeaderRoom = 10;
constexpr std::uint32_t kSearchRoom = 100;
constexpr std::uint32_t kSegmentRoom = 4096;

class Lines {
public:
    explicit Lines(const std::string& locator) : file_(OpenFile::forReading(locator)) {}

    /// Valid until the next call. Nothing at the end, which a zero byte that holds the position is as well.
    std::optional<std::string_view> next(std::uint32_t room) {
        if (!file_.isOpen()) return std::nullopt;
        const std::int64_t before = kvOSTell(file_.handle());
        const char* const line = kvOSfgets(buffer_, room, file_.handle());
        if (line == nullptr || kvOSTell(file_.handle()) == before) return std::nullopt;
        return line;
    }

private:
    OpenFile file_;
    char buffer_[kSegmentRoom];
};

/// Passes over the lines of one segment.
bool isOffsetStated(Lines& lines) {
    bool isStated = false;
    for (auto line = lines.next(kSegmentRoom); line && line->starts_with('#'); line = lines.next(kSegmentRoom)) {
        if (line->starts_with("#EXT-X-BYTERANGE") && line->find('@') != std::string_view::npos) isStated = true;
    }
    return isStated;
}

}  // namespace

std::vector<bool> statedOffsets(const std::string& playlist) {
    std::vector<bool> stated;
    Lines lines(playlist);
    for (auto line = lines.next(kHeaderRoom); line; line = lines.next(kSearchRoom)) {
        if (line->starts_with("#EXTINF")) stated.push_back(isOffsetStated(lines));
    }
    return stated;
}

}  // namespace kv::tool
