// Pairs of a JSON text as the token file and the endpoint's answer are read: as far as 25 tokens reach, whatever the
// text is.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#define JSMN_HEADER
#include <jsmn.h>

namespace kv::file {

class JsonTokens {
public:
    explicit JsonTokens(std::string_view text) : text_(text) {
        jsmn_parser parser;
        jsmn_init(&parser);
        // What it found before a mistake, or before it ran out of tokens, counts.
        jsmn_parse(&parser, text.data(), text.size(), tokens_.data(), static_cast<unsigned>(tokens_.size()));
    }

    static constexpr std::size_t kCount = 25;

    bool isThere(std::size_t index) const { return index < kCount && tokens_[index].type != JSMN_UNDEFINED; }
    bool isString(std::size_t index) const { return isThere(index) && tokens_[index].type == JSMN_STRING; }
    std::string_view text(std::size_t index) const {
        const jsmntok_t& token = tokens_[index];
        if (token.end < token.start) return {};  // begun, and not ended in the text
        return text_.substr(static_cast<std::size_t>(token.start), static_cast<std::size_t>(token.end - token.start));
    }

    /// Meant: a key that is only the beginning of a known word passes for it.
    static bool matches(std::string_view key, std::string_view known) { return known.starts_with(key); }

private:
    std::string_view text_;
    std::array<jsmntok_t, kCount> tokens_{};
};

}  // namespace kv::file
