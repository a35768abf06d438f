// The decoders of URL texts, quoted values, XML, HTML and hexadecimal digits, and the encoders beside them.
//
// What must hold: no call writes behind the room that it asks for or reads behind a text's end, decoding in place gives
// the same, and of what is told to come back all does.
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "kvos/encoding.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::must;

using Call = std::uint64_t (*)(const char* input, char* output);

std::string outputOf(Call call, const std::string& text, std::size_t room) {
    ExactBuffer input(text);
    ExactBuffer output(room);
    const std::uint64_t length = call(input, output);
    must(output.text().size() == length, "the result is the length of the text");
    return std::string(output.text());
}

std::string decoded(Call call, const std::string& text) {
    std::string result = outputOf(call, text, text.size() + 1);
    ExactBuffer place(text);
    must(call(place, place) == result.size() && place.text() == result, "decoding in place gives the same");
    return result;
}

std::string html(const std::string& text) {
    ExactBuffer input(text);
    ExactBuffer output(text.size() + 1);
    const std::uint64_t length = html_decode_html_entities_utf8(output, input);
    must(length <= text.size() && output.data()[length] == '\0', "the result lies within the source's length");
    ExactBuffer place(text);
    must(html_decode_html_entities_utf8(place, nullptr) == length, "decoding in place gives the same length");
    must(std::memcmp(place, output, length) == 0, "decoding in place gives the same");
    return {output.data(), length};
}

void checkHex(const std::string& text) {
    std::uint64_t length = 0;
    ExactBuffer input(text);
    kvDecodeHEXString(input, nullptr, &length);
    must(length == (text.size() + 1) / 2, "the size is told");
    ExactBuffer bytes(length);
    kvDecodeHEXString(input, bytes.data(), &length);
    ExactBuffer digits(2 * length + 1);
    kvEncodeHEXString(bytes.data(), length, digits);
    ExactBuffer back(length);
    kvDecodeHEXString(digits, back.data(), &length);
    must(std::memcmp(back, bytes, length) == 0, "bytes come back from their digits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::strlen(text.c_str()));
    decoded(kvDecodeURLString, text);
    decoded(kvDecodeEscapeString, text);
    decoded(kvDecodeXMLString, text);
    must(html(text).size() <= text.size(), "HTML does not grow");
    checkHex(text);
    if (const char* entity = html_get_named_entity(ExactBuffer(text)); entity != nullptr) {
        must(std::strlen(entity) <= 3, "an entity's text is short");
    }
    outputOf(kvEncodeURLString, text, 3 * text.size() + 1);
    outputOf(kvEncodeEscapeString, text, 4 * text.size() + 1);
    const std::string xml = outputOf(kvEncodeXMLString, text, 6 * text.size() + 1);
    must(html(xml) == text, "what is encoded for XML is decoded as HTML");
    return 0;
}
