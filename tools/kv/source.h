// A file read from a place on to its end, whatever kind it is.
//
// The library tells an end in several ways: by a success without bytes, by a failure, by fewer bytes than were asked
// for, and on a server that tells no length by refusing the range behind the last byte. Which of them is the end, and
// which a fault, is settled here.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "kv/open_file.h"

namespace kv::tool {

class Source {
public:
    /// Nothing on failure, which is told.
    static std::optional<Source> open(const std::string& locator);

    const std::string& locator() const { return locator_; }

    /// Bytes of the whole file, where that is known.
    std::optional<std::uint64_t> size() const { return size_; }

    /// Goes on at `position`, and ends `bytes` behind it. False on failure, which is told.
    bool narrow(std::uint64_t position, std::uint64_t bytes);

    /// The next bytes, valid until the next call; none at the end. Nothing on failure, which is told: a file that ends
    /// ahead of its size, or of what it was narrowed to, is one.
    std::optional<std::span<const char>> next();

private:
    Source(std::string locator, OpenFile file);

    /// What one read said.
    struct Answer {
        bool succeeded;
        std::uint32_t asked;
        std::uint32_t got;
    };

    void resize(std::uint32_t room);
    Answer read(std::uint32_t count);
    Answer readBlock();
    bool isAtEnd(const Answer& answer) const;
    bool isHeaders(const Answer& answer) const;
    bool isCut() const;

    std::string locator_;
    OpenFile file_;
    bool isUrl_;
    bool isSizeZero_ = false;  // as a URL's server told it, or refused to
    bool isRanged_ = false;    // narrowed
    bool isOver_ = false;      // the end was met
    std::optional<std::uint64_t> size_;
    std::uint64_t done_ = 0;                  // bytes delivered
    std::uint64_t left_ = ~std::uint64_t{0};  // bytes to the end, where it is known ahead of it
    std::uint32_t room_ = 0;
    std::unique_ptr<char[]> block_;
};

}  // namespace kv::tool
