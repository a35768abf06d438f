// References to letters beyond ASCII, settled ahead of the reading.
//
// They are looked for where the XML library decodes them, in texts and in values of attributes. Comments, CDATA,
// declarations and the like hold none, and stay as they are.
#include "config/references.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "border/text.h"

namespace kv::config {
namespace {

constexpr char32_t kLastOfAscii = 0x7F;
constexpr char32_t kLastOfLatin1 = 0xFF;
constexpr char32_t kLastOfAll = 0x10FFFF;
constexpr std::string_view kBlanks = " \t\n";

enum class Letters { utf8, latin1, other };

/// What the file says that it is written in. XML takes a file that says nothing for UTF-8.
Letters lettersOf(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (!border::beginsWithAnyCase(text, "<?xml")) return Letters::utf8;
    const std::string_view declaration = text.substr(0, text.find('>'));
    const std::size_t encoding = border::findAnyCase(declaration, "encoding");
    const std::size_t open = encoding == std::string_view::npos ? encoding : declaration.find_first_of("\"'", encoding);
    if (open == std::string_view::npos) return Letters::utf8;
    const std::size_t close = declaration.find(declaration[open], open + 1);
    const std::string_view name = declaration.substr(open + 1, close - open - 1);
    for (const char* same : {"", "utf-8", "utf8"}) {
        if (border::equalAnyCase(name, same)) return Letters::utf8;
    }
    // The last one differs below 160 alone, in control characters.
    for (const char* same : {"iso-8859-1", "latin1", "windows-1252"}) {
        if (border::equalAnyCase(name, same)) return Letters::latin1;
    }
    return Letters::other;
}

/// Behind what begins with the "<" at `at` and holds no references; for the tag of an element behind the "<" alone.
std::size_t behindLiteral(std::string_view text, std::size_t at) {
    struct Literal {
        std::string_view start, end;
    };
    for (const auto& [start, end] :
         {Literal{"<!--", "-->"}, Literal{"<![CDATA[", "]]>"}, Literal{"<!", ">"}, Literal{"<?", ">"}}) {
        if (!text.substr(at).starts_with(start)) continue;
        const std::size_t found = text.find(end, at + start.size());
        return found == std::string_view::npos ? text.size() : found + end.size();
    }
    return at + 1;
}

bool isLetter(char32_t letter) { return letter <= kLastOfAll && (letter < 0xD800 || letter > 0xDFFF); }

struct Reference {
    std::size_t end = 0;  // behind its ";"; 0 if there is no reference
    char32_t letter = 0;
};

Reference readReference(std::string_view text, std::size_t at) {
    if (!text.substr(at).starts_with("&#")) return {};
    constexpr std::string_view kDigits = "0123456789abcdef";
    at += 2;
    const bool isHexadecimal = at < text.size() && text[at] == 'x';
    const std::size_t base = isHexadecimal ? 16 : 10;
    const std::size_t first = isHexadecimal ? at + 1 : at;
    Reference read;
    for (at = first; at < text.size() && text[at] != ';'; ++at) {
        const std::size_t digit = kDigits.find(border::lowerCase(text[at]));
        if (digit >= base) return {};
        if (isLetter(read.letter)) read.letter = static_cast<char32_t>(read.letter * base + digit);
    }
    if (at > first && at < text.size()) read.end = at + 1;
    return read;
}

/// For letters beyond ASCII alone.
void appendUtf8(std::string& text, char32_t letter) {
    const auto next = [&](char32_t mark, int shift, char32_t bits) {
        text += static_cast<char>(mark | (letter >> shift & bits));
    };
    if (letter < 0x800) {
        next(0xC0, 6, 0x1F);
    } else {
        if (letter < 0x10000) {
            next(0xE0, 12, 0x0F);
        } else {
            next(0xF0, 18, 0x07);
            next(0x80, 12, 0x3F);
        }
        next(0x80, 6, 0x3F);
    }
    next(0x80, 0, 0x3F);
}

}  // namespace

bool settleReferences(std::string& text) {
    if (text.find("&#") == std::string::npos) return true;
    const Letters letters = lettersOf(text);
    const std::string_view all = text;
    std::string settled;
    std::size_t copied = 0;
    for (std::size_t at = all.find_first_of("<&"); at < all.size(); at = all.find_first_of("<&", at)) {
        if (all[at] == '<') {
            at = behindLiteral(all, at);
            continue;
        }
        const Reference reference = readReference(all, at);
        const std::size_t start = at++;
        if (reference.end == 0 || reference.letter <= kLastOfAscii) continue;
        if (letters == Letters::latin1 && reference.letter <= kLastOfLatin1) continue;
        if (letters != Letters::utf8 || !isLetter(reference.letter)) return false;
        settled += all.substr(copied, start - copied);
        appendUtf8(settled, reference.letter);
        at = copied = reference.end;
    }
    if (copied == 0) return true;
    settled += all.substr(copied);
    text = std::move(settled);
    return true;
}

}  // namespace kv::config
