// The XML library reads, keeps and frees by recursion, takes some forty bytes for each that it reads, and changes two
// things that keys may hold: it joins blanks, and makes one byte of any numeric reference. Texts are bounded and
// rewritten ahead of it, so that none of this is seen.
#include "file/s3/xml_answer.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "border/nesting.h"
#include "file/s3/answers.h"

namespace kv::file::s3 {
namespace {

constexpr std::size_t kDeepest = 32;  // answers have four levels
constexpr std::ptrdiff_t kMostTags = 1000000;
constexpr std::string_view kBlanks = " \t\r\n";

/// The letter of a numeric reference in UTF-8; empty for those up to 127, which the XML library reads well, and for
/// what is no letter. `reference` is the text between "&#" and ";".
std::string letterOf(std::string_view reference) {
    const bool hexadecimal = reference.starts_with('x');
    if (hexadecimal) reference.remove_prefix(1);
    std::uint32_t letter = 0;
    const auto [end, error] =
        std::from_chars(reference.data(), reference.data() + reference.size(), letter, hexadecimal ? 16 : 10);
    if (error != std::errc{} || end != reference.data() + reference.size()) return {};
    if (letter < 0x80 || letter > 0x10FFFF || (letter >= 0xD800 && letter < 0xE000)) return {};
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | (letter >> shift & 0x3F)); };
    if (letter < 0x800) return {static_cast<char>(0xC0 | letter >> 6), tail(0)};
    if (letter < 0x10000) return {static_cast<char>(0xE0 | letter >> 12), tail(6), tail(0)};
    return {static_cast<char>(0xF0 | letter >> 18), tail(12), tail(6), tail(0)};
}

/// Of "&#x10FFFF;" with zeros ahead. What is longer stays as it is: a search to the end for each "&#" of a text full of
/// them would take hours.
constexpr std::size_t kLongestReference = 16;

/// Appends the text between two tags: its blanks as references, unless there is nothing else in it.
void appendContent(std::string& out, std::string_view content) {
    if (content.find_first_not_of(kBlanks) == std::string_view::npos) {
        out.append(content);
        return;
    }
    for (std::size_t at = 0; at < content.size(); ++at) {
        const char character = content[at];
        const std::string_view near = content.substr(at, kLongestReference);
        const std::size_t end = near.starts_with("&#") ? near.find(';') : std::string_view::npos;
        const std::string letter = end == std::string_view::npos ? "" : letterOf(near.substr(2, end - 2));
        if (!letter.empty()) {
            out.append(letter);
            at += end;
        } else if (kBlanks.find(character) != std::string_view::npos) {
            out.append("&#").append(std::to_string(static_cast<int>(character))).append(";");
        } else {
            out += character;
        }
    }
}

/// The text with what stands between its tags rewritten. Where a tag ends is taken simply, which a comment or a quoted
/// ">" can deceive; then the rewriting ends in a place of no importance, or in a text that is no XML.
std::string rewritten(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t tag = std::min(text.find('<', at), text.size());
        appendContent(out, text.substr(at, tag - at));
        const std::size_t end = text.find('>', tag);
        at = end == std::string_view::npos ? text.size() : end + 1;
        out.append(text.substr(tag, at - tag));
    }
    return out;
}

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    return text;
}

}  // namespace

bool readXml(std::string_view text, TiXmlDocument& document) {
    if (text.size() > kLargestAnswer || text.find('\0') != std::string_view::npos) return false;
    if (std::ranges::count(text, '<') > kMostTags) return false;
    const std::string safe = rewritten(withoutByteOrderMark(text));
    if (border::deepestNesting(safe) > kDeepest) return false;
    document.SetTabSize(0);
    // Bytes pass unchanged, and none is read behind the end of a text that is cut in the middle of a letter.
    document.Parse(safe.c_str(), nullptr, TIXML_ENCODING_LEGACY);
    return !document.Error() && document.RootElement() != nullptr;
}

std::string textIn(const TiXmlElement* element) {
    std::string text;
    if (element == nullptr) return text;
    for (const TiXmlNode* node = element->FirstChild(); node != nullptr; node = node->NextSibling()) {
        if (node->ToText() != nullptr) text += node->ValueStr();
    }
    return text;
}

std::string textOf(const TiXmlElement& parent, const char* child) { return textIn(parent.FirstChildElement(child)); }

}  // namespace kv::file::s3
