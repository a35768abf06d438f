// kv fourcc: what the library knows of a format code, or of all of them.
//
// A code is four characters as they lie in memory, a blank included, or a number in hexadecimal with 0x ahead of it.
#include "fourcc.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "fourcc_codes.h"
#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/fourcc_names.h"
#include "kv/json_text.h"
#include "kv/standard_streams.h"
#include "kv/table.h"

namespace kv::tool {
namespace {

struct Request {
    std::string code;
    bool list = false;
    std::string is;
    std::string size;
    std::int32_t bits = 24;
    std::int32_t rate = 25;
    bool json = false;
};

struct Size {
    std::uint32_t width;
    std::uint32_t height;
};

// ---- taking it in ------------------------------------------------------------------------------------------------

std::optional<std::uint32_t> numberOf(std::string_view text, int base) {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return number;
}

std::optional<std::uint32_t> codeOf(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) return numberOf(text.substr(2), 16);
    if (text.size() != 4) return std::nullopt;
    return KVFCC(text[0], text[1], text[2], text[3]);
}

std::optional<Size> sizeOf(std::string_view text) {
    const std::size_t cross = std::min(text.find('x'), text.size());
    const auto width = numberOf(text.substr(0, cross), 10);
    const auto height = cross == text.size() ? std::nullopt : numberOf(text.substr(cross + 1), 10);
    if (!width || !height) return std::nullopt;
    return Size{*width, *height};
}

// ---- in words ----------------------------------------------------------------------------------------------------

std::string hexText(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

/// The four characters; nothing where one of them cannot be shown.
std::optional<std::string> charactersOf(std::uint32_t fcc) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(fcc >> shift & 0xFF);
    const bool isShown = std::ranges::all_of(text, [](char one) { return one >= ' ' && one <= '~'; });
    return isShown ? std::optional(text) : std::nullopt;
}

std::string quotedCode(std::uint32_t fcc) {
    const auto text = charactersOf(fcc);
    return text ? "'" + *text + "'" : "-";
}

std::uint32_t flagsOf(std::uint32_t fcc) {
    return fccGetInfo(fcc, nullptr, nullptr, nullptr, fccFlagVideo | fccFlagAudio);
}

std::string kindOf(std::uint32_t fcc) {
    if (fccIsInfo(fcc) != 0) return "information";
    if (fccIsAudio(fcc) != 0) return "audio";
    return fccIsVideo(fcc) != 0 ? "video" : "unknown";
}

/// Some codes are in both tables, and count as video unless audio alone is asked for.
bool isAudioToo(std::uint32_t fcc) {
    return fccIsVideo(fcc) != 0 && fccGetInfoAudio(fcc, nullptr, nullptr, nullptr) != 0;
}

std::string kindText(std::uint32_t fcc) { return kindOf(fcc) + (isAudioToo(fcc) ? ", also audio" : ""); }

std::string flagsText(std::uint32_t flags) {
    std::string text = hexText(flags);
    for (const std::string& name : flagNames(flags)) text += " " + name;
    return text;
}

// ---- one code ----------------------------------------------------------------------------------------------------

std::string frameText(const Request& request, const Size& size, std::uint32_t bytes) {
    return std::to_string(bytes) + " bytes at " + std::to_string(size.width) + "x" + std::to_string(size.height) +
           ", " + std::to_string(request.bits) + " bits, rate " + std::to_string(request.rate);
}

std::string codeAsTable(std::uint32_t fcc, const std::optional<std::string>& frame) {
    Table table({Align::left, Align::left});
    table.add({"code", quotedCode(fcc)});
    table.add({"value", hexText(fcc)});
    table.add({"kind", kindText(fcc)});
    table.add({"flags", flagsText(flagsOf(fcc))});
    std::string label = "holds";
    for (const std::string& name : predicatesThatHold(fcc)) {
        table.add({label, name});
        label.clear();
    }
    if (frame) table.add({"frame", *frame});
    return table.text();
}

nlohmann::ordered_json knownAsJson(std::uint32_t fcc) {
    const auto text = charactersOf(fcc);
    return {{"code", text ? nlohmann::ordered_json(*text) : nlohmann::ordered_json()},
            {"value", fcc},
            {"kind", kindOf(fcc)},
            {"audioToo", isAudioToo(fcc)},
            {"flagsWord", flagsOf(fcc)},
            {"flags", flagNames(flagsOf(fcc))}};
}

Exit showCode(const Request& request) {
    const auto fcc = codeOf(request.code);
    if (!fcc) {
        complain("'" + request.code + "' is no code: four characters, or 0x and up to eight digits");
        return Exit::usage;
    }
    const auto size = sizeOf(request.size);
    if (!request.size.empty() && !size) {
        complain("'" + request.size + "' is no size: width and height in pixels, as in 1920x1080");
        return Exit::usage;
    }
    const std::uint32_t bytes =
        size ? fccGetMaxFrameSize(*fcc, size->width, size->height, request.bits, request.rate) : 0;
    if (!request.json) {
        return writeOut(codeAsTable(*fcc, size ? std::optional(frameText(request, *size, bytes)) : std::nullopt));
    }
    auto document = knownAsJson(*fcc);
    document["holds"] = predicatesThatHold(*fcc);
    if (size) {
        document["frame"] = {{"width", size->width},
                             {"height", size->height},
                             {"bits", request.bits},
                             {"rate", request.rate},
                             {"bytes", bytes}};
    }
    return writeOut(jsonText(document));
}

// ---- all of them -------------------------------------------------------------------------------------------------

/// Codes of which the same is known: one, or a part of the range that has a rule instead of a list.
struct Span {
    std::uint32_t first;
    std::uint32_t last;
};

std::vector<Span> allCodes() {
    std::vector<Span> all;
    for (const std::uint32_t fcc : {KVFCC_LISTED_CODES}) {
        if (fcc < KVFCC_RANGE) all.push_back({fcc, fcc});
    }
    constexpr std::array kParts{KVFCC_RANGE, KVFCC_RANGE_UNCOMPRESSED_1, 0x8800001Fu,
                                0x88000025u, KVFCC_RANGE_UNCOMPRESSED_2, 0x8810001Fu,
                                0x88100025u};
    for (std::size_t i = 0; i < kParts.size(); ++i) {
        all.push_back({kParts[i], i + 1 < kParts.size() ? kParts[i + 1] - 1 : 0xFFFFFFFFu});
    }
    return all;
}

std::string listAsTable(const std::vector<Span>& codes) {
    Table table({Align::left, Align::left, Align::left, Align::left});
    table.add({"CODE", "VALUE", "KIND", "FLAGS"});
    for (const Span& span : codes) {
        const std::string value = hexText(span.first) + (span.first == span.last ? "" : "-" + hexText(span.last));
        table.add({quotedCode(span.first), value, kindText(span.first), flagsText(flagsOf(span.first))});
    }
    return table.text();
}

std::string listAsJson(const std::vector<Span>& codes) {
    auto list = nlohmann::ordered_json::array();
    for (const Span& span : codes) {
        auto known = knownAsJson(span.first);
        known["last"] = span.last;
        list.push_back(known);
    }
    return jsonText(list);
}

Exit listCodes(const Request& request) {
    std::vector<Span> codes = allCodes();
    if (!request.is.empty()) {
        const Predicate* const asked = predicateNamed(request.is);
        if (asked == nullptr) {
            complain("'" + request.is + "' is no predicate (see kv fourcc --help)");
            return Exit::usage;
        }
        std::erase_if(codes, [&](const Span& span) { return asked->holds(span.first) == 0; });
    }
    return writeOut(request.json ? listAsJson(codes) : listAsTable(codes));
}

std::string predicatesForHelp() {
    std::string text = "Predicates:";
    std::size_t column = 80;
    for (const Predicate& one : predicates()) {
        if (column + 1 + one.name.size() > 78) {
            text += "\n ";
            column = 1;
        }
        text.append(" ").append(one.name);
        column += 1 + one.name.size();
    }
    return text;
}

}  // namespace

void declareFourcc(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("fourcc", "Show what is known of a format code, or list the codes");
    command->footer("Example: kv fourcc dvhd --size 1280x720 --rate 50\nExample: kv fourcc --list --is fccIsBayer\n\n" +
                    predicatesForHelp());
    auto request = std::make_shared<Request>();
    auto* code = addText(*command, "CODE", request->code, "Four characters, blanks included, or hexadecimal: 0x55");
    auto* list = command->add_flag("--list", request->list, "List every code instead, and the range that has a rule");
    addText(*command, "--is", request->is, "List only the codes for which this predicate holds")->needs(list);
    auto* size = addText(*command, "--size", request->size, "Tell the largest frame of WIDTHxHEIGHT pixels");
    command->add_option("--bits", request->bits, "Depth of a pixel for --size")->capture_default_str()->needs(size);
    command->add_option("--rate", request->rate, "Whole frames a second for --size")
        ->capture_default_str()
        ->needs(size);
    command->add_flag("--json", request->json, "Print JSON: an object for a code, an array for the list");
    code->excludes(list);
    size->excludes(list);
    command->callback([&chosen, code, request] {
        if (code->empty() && !request->list) throw CLI::RequiredError("CODE or --list");
        chosen = [request] { return request->list ? listCodes(*request) : showCode(*request); };
    });
}

}  // namespace kv::tool
