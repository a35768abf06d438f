// The document is searched by the order of its tokens alone; nothing asks what is inside what. A pair that belongs to
// the next system or product is therefore taken as well, if it begins close enough.
#include "system/version_document.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

#define JSMN_HEADER
#include <jsmn.h>

namespace kv::system {
namespace {

constexpr std::string_view kSystem = "mac";
constexpr std::size_t kTokens = 600;
constexpr std::size_t kReach = 13;  // tokens behind the system's name at which a key can stand

class Tokens {
public:
    explicit Tokens(std::string_view text) : text_(text) {
        jsmn_parser parser;
        jsmn_init(&parser);
        // What it found before a mistake, or before it ran out of tokens, counts.
        jsmn_parse(&parser, text.data(), text.size(), tokens_.data(), kTokens);
    }

    bool isThere(std::size_t index) const { return index < kTokens && tokens_[index].type != JSMN_UNDEFINED; }
    bool isString(std::size_t index) const { return isThere(index) && tokens_[index].type == JSMN_STRING; }

    /// Nothing for an object or a list that the text does not close, besides tokens that are not there.
    std::optional<std::string_view> text(std::size_t index) const {
        if (!isThere(index)) return std::nullopt;
        const auto [type, start, end, size] = tokens_[index];
        if (start < 0 || end < start) return std::nullopt;
        return text_.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
    }

private:
    std::string_view text_;
    std::array<jsmntok_t, kTokens> tokens_{};
};

std::optional<std::size_t> findProduct(const Tokens& tokens, std::string_view product) {
    for (std::size_t i = 0; tokens.isThere(i); ++i) {
        if (tokens.isString(i) && tokens.text(i) == product) return i;
    }
    return std::nullopt;
}

/// Tokens of all types take part.
std::optional<std::size_t> findSystem(const Tokens& tokens, std::size_t from) {
    for (std::size_t i = from; tokens.isThere(i); ++i) {
        if (tokens.text(i) == kSystem) return i;
    }
    return std::nullopt;
}

/// The texts that pairs fill. One that is not there stays unset.
struct Fields {
    std::optional<std::string> major;
    std::optional<std::string> minor;
    std::optional<std::string> build;
    std::optional<std::string> url;
    std::optional<std::string> description;

    /// In the order in which a key is compared. Meant: one that is only the beginning of a name passes for it, so that
    /// an empty one is the first.
    std::optional<std::string>* named(std::string_view key) {
        struct Name {
            std::string_view text;
            std::optional<std::string>& field;
        };
        const std::array<Name, 5> names{{{"version_major", major},
                                         {"version_minor", minor},
                                         {"version_build", build},
                                         {"url", url},
                                         {"description", description}}};
        for (const Name& name : names) {
            if (name.text.starts_with(key)) return &name.field;
        }
        return nullptr;
    }
};

/// A known key moves on behind its value, any other by one token. Meant: the value of an unknown key is looked at as a
/// key itself.
Fields readFields(const Tokens& tokens, std::size_t system) {
    Fields fields;
    const std::size_t end = system + kReach;
    for (std::size_t key = system + 1; tokens.isThere(key);) {
        const auto text = tokens.text(key);
        std::optional<std::string>* const field = text ? fields.named(*text) : nullptr;
        if (field == nullptr) {
            if (key >= end) break;
            ++key;
            continue;
        }
        if (const auto value = tokens.text(key + 1)) *field = std::string(*value);
        if (key + 1 >= end) break;
        key += 2;
    }
    return fields;
}

/// Meant: the low 16 bits alone.
std::uint32_t numberOf(const std::string& text) {
    return static_cast<std::uint32_t>(std::strtol(text.c_str(), nullptr, 10)) & 0xFFFF;
}

}  // namespace

bool Release::isNewerThan(const Version& held) const {
    if (numberOf(major) != held.major) return numberOf(major) > held.major;
    if (numberOf(minor) != held.minor) return numberOf(minor) > held.minor;
    return numberOf(build) > held.build;
}

std::optional<Release> releaseIn(std::string_view document, std::string_view product) {
    const auto tokens = std::make_unique<const Tokens>(document);
    const auto at = findProduct(*tokens, product);
    if (!at) return std::nullopt;
    const auto system = findSystem(*tokens, *at + 1);
    if (!system) return std::nullopt;
    const Fields fields = readFields(*tokens, *system);
    if (!fields.major || !fields.minor || !fields.build) return std::nullopt;
    return Release{*fields.major, *fields.minor, *fields.build, fields.url.value_or(""),
                   fields.description.value_or("")};
}

}  // namespace kv::system
