// Blocks of 4 MiB: reads of a MiB and more go past the library's cache of URLs, and only they count exactly what came.
#include "kv/source.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "kv/complaint.h"
#include "kv/redirected.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kBlock = 4u << 20;
constexpr std::uint32_t kLargestBlock = 4095u << 20;
constexpr std::uint32_t kSmallestUncached = 1u << 20;
constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

}  // namespace

std::optional<Source> Source::open(const std::string& locator) {
    OpenFile file = OpenFile::forReading(locator);
    if (file.isOpen()) return Source(locator, std::move(file));
    complainOf("open", locator);
    return std::nullopt;
}

Source::Source(std::string locator, OpenFile file)
    : locator_(std::move(locator)), file_(std::move(file)), isUrl_(isUrl(locator_)) {
    resize(kBlock);
    if (!isUrl_) {
        size_ = isObject(locator_) ? sizeOf(file_) : sizeOf(locator_);
        return;
    }
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(file_.handle(), &size);
    // A size of 0 may as well be one that was not told: the first read shows it.
    isSizeZero_ = size == 0;
    if (size == 0 || size == kUnknown) return;
    size_ = left_ = size;
}

bool Source::narrow(std::uint64_t position, std::uint64_t bytes) {
    if (size_ && (position > *size_ || bytes > *size_ - position)) {
        complain("'" + locator_ + "' has " + std::to_string(*size_) + " bytes, which end ahead of the range");
        return false;
    }
    kvOSSetLastError(0);
    if (position != 0 && kvOSSeek(file_.handle(), static_cast<std::int64_t>(position)) == -1) {
        complainOf("read", locator_);
        return false;
    }
    isRanged_ = true;
    left_ = bytes;
    return true;
}

void Source::resize(std::uint32_t room) {
    block_.reset();
    block_ = std::make_unique_for_overwrite<char[]>(room);
    room_ = room;
}

Source::Answer Source::read(std::uint32_t count) {
    std::uint32_t got = 0;
    kvOSSetLastError(0);
    const bool succeeded = kvOSReadFile(file_.handle(), block_.get(), count, &got, nullptr) != 0;
    return {succeeded, count, got};
}

/// What knows neither length nor ranges comes whole or not at all, so that the block has to be large enough for it.
Source::Answer Source::readBlock() {
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(room_, left_));
    Answer answer = read(isUrl_ ? std::max(count, kSmallestUncached) : count);
    const bool comesWhole = isUrl_ && !size_ && !isRanged_ && done_ == 0;
    while (comesWhole && !answer.succeeded && errno == EIO && room_ < kLargestBlock) {
        resize(std::min(room_, kLargestBlock / 4) * 4);
        answer = read(room_);
    }
    return answer;
}

bool Source::isAtEnd(const Answer& answer) const {
    if (answer.got != 0) return isUrl_ && !size_ && answer.got < answer.asked;
    if (answer.succeeded) return true;
    if (!isUrl_) return kvOSfeof(file_.handle()) != 0;
    // Behind the last byte there is no such range; or all comes again, which was just as long as the block.
    return !size_ && (errno == EINVAL || (errno == EPROTO && done_ != 0));
}

/// What the library delivers where a server refused the request of the open: that answer's headers, and no content.
bool Source::isHeaders(const Answer& answer) const {
    return isSizeZero_ && done_ == 0 && std::string_view(block_.get(), answer.got).starts_with("HTTP/");
}

bool Source::isCut() const { return isRanged_ ? left_ != 0 : size_ && done_ < *size_; }

std::optional<std::span<const char>> Source::next() {
    if (left_ == 0 || isOver_) return std::span<const char>();
    const Answer answer = readBlock();
    isOver_ = isAtEnd(answer);
    if (!answer.succeeded && !isOver_) {
        complainOf("read", locator_);
        return std::nullopt;
    }
    if (isHeaders(answer)) {
        complain("cannot read '" + locator_ + "': the server refuses to tell of files without sending them");
        return std::nullopt;
    }
    const std::uint64_t given = std::min<std::uint64_t>(answer.got, left_);
    done_ += given;
    if (left_ != kUnknown) left_ -= given;
    if (isOver_ && isCut()) {
        complain("'" + locator_ + "' ended early, after " + std::to_string(done_) + " bytes");
        return std::nullopt;
    }
    return std::span<const char>(block_.get(), given);
}

}  // namespace kv::tool
