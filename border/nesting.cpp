// The depth of an XML text.
//
// The XML library stops at the first mistake; this scan goes on, and so comes to the same depth or a higher one. What
// it must get right is where a comment, a quoted value or the like ends, since a tag in there is none. In two places
// the library finds ends of its own: in declarations, where some quotes count and others don't, and in references,
// where "&#x<k>x41;" is one letter to it. Whatever is not plain there could hide any depth, and counts as that.
#include "border/nesting.h"

#include <algorithm>

#include "border/text.h"

namespace kv::border {
namespace {

constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCdataStart = "<![CDATA[";
constexpr std::string_view kDeclarationStart = "<?xml";  // in any case, and of any name that begins so
constexpr std::size_t kUncertain = kAnyDepth;            // an end that the library may see elsewhere

bool beginsName(char character) {
    const auto byte = static_cast<unsigned char>(character);
    const auto letter = static_cast<unsigned char>(byte | 0x20);
    return (letter >= 'a' && letter <= 'z') || byte == '_' || byte >= 127;
}

std::size_t behind(std::string_view text, std::string_view mark, std::size_t from) {
    const std::size_t at = text.find(mark, from);
    return at == std::string_view::npos ? text.size() : at + mark.size();
}

constexpr bool isQuote(char character) { return character == '"' || character == '\''; }

/// Whether each "&#" begins a reference of letters and digits, up to a ";": the library goes to the next ";" in any
/// case.
bool hasPlainReferences(std::string_view text) {
    constexpr std::string_view kLettersAndDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    for (std::size_t at = text.find("&#"); at < text.size(); at = text.find("&#", at + 1)) {
        const std::size_t end = text.find_first_not_of(kLettersAndDigits, at + 2);
        if (end >= text.size() || text[end] != ';') return false;
    }
    return true;
}

/// Whether a declaration ends at its first ">" for certain; `inside` is what stands ahead of that. The library reads
/// values in quotes behind the names it knows and passes over all else, quotes too: so none may be open, and a quoted
/// text may hold neither "=", ahead of which a name could stand, nor a reference.
bool isPlainDeclaration(std::string_view inside) {
    char quote = 0;
    for (const char character : inside) {
        if (quote == 0) {
            quote = isQuote(character) ? character : '\0';
        } else if (character == quote) {
            quote = 0;
        } else if (character == '=' || character == '&') {
            return false;
        }
    }
    return quote == 0;
}

std::size_t behindDeclaration(std::string_view text, std::size_t at) {
    const std::size_t inside = at + kDeclarationStart.size();
    const std::size_t end = behind(text, ">", inside);
    return isPlainDeclaration(text.substr(inside, end - inside)) ? end : kUncertain;
}

struct Tag {
    std::size_t end;  // behind its ">"
    bool hasContent;  // not closed in itself by "/>"
};

Tag readTag(std::string_view text, std::size_t at) {
    while (at < text.size()) {
        const char character = text[at];
        if (isQuote(character)) {
            const std::size_t end = std::min(text.find(character, at + 1), text.size());
            if (!hasPlainReferences(text.substr(at, end - at))) return {kUncertain, true};
            at = end;
        } else if (character == '>') {
            return {at + 1, text[at - 1] != '/'};
        }
        ++at;
    }
    return {text.size(), true};
}

}  // namespace

std::size_t deepestNesting(std::string_view text) {
    std::size_t depth = 0;
    std::size_t deepest = 0;
    std::size_t at = 0;
    while (at != kUncertain) {
        const std::size_t mark = std::min(text.find('<', at), text.size());
        if (depth > 0 && !hasPlainReferences(text.substr(at, mark - at))) break;
        if (mark == text.size()) return deepest;
        at = mark;
        const std::string_view rest = text.substr(at);
        if (rest.starts_with(kCommentStart)) {
            at = behind(text, "-->", at + kCommentStart.size());
        } else if (rest.starts_with(kCdataStart)) {
            at = behind(text, "]]>", at + kCdataStart.size());
        } else if (rest.starts_with("</")) {
            depth -= depth > 0 ? 1 : 0;
            at = behind(text, ">", at);
        } else if (rest.size() > 1 && beginsName(rest[1])) {
            const Tag tag = readTag(text, at + 1);
            deepest = std::max(deepest, depth + 1);
            depth += tag.hasContent ? 1 : 0;
            at = tag.end;
        } else if (beginsWithAnyCase(rest, kDeclarationStart)) {
            at = behindDeclaration(text, at);
        } else {
            at = behind(text, ">", at);
        }
    }
    return kAnyDepth;
}

}  // namespace kv::border
