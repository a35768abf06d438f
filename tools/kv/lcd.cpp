// kv lcd: text, LEDs and keys of the front panel.
//
// The line is opened without waiting for replies: whether a panel is there is then asked for by itself, several times,
// since a panel that has just changed its speed may miss the first question.
#include "kvos/lcd.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/json_text.h"
#include "kv/patience.h"
#include "kv/standard_streams.h"

namespace kv::tool {
namespace {

constexpr std::uint8_t kReadKeys = 0x18;
constexpr std::uint32_t kSlow = 19200;
constexpr std::uint32_t kFast = 115200;
constexpr int kQuestions = 3;
constexpr std::uint32_t kLeds = 6;
constexpr int kTriesOfAReply = 4;        // each of which an interruption ends
constexpr std::uint32_t kLastRow = 255;  // that a command can name

struct Request {
    std::string port;
    std::uint32_t speed = kSlow;
    std::uint32_t wait_ms = 500;
    std::uint32_t row = 0;
    std::uint32_t column = 0;
    std::vector<std::string> text;
    std::vector<std::string> leds;
    bool clear = false;
    bool graphic = false;
    bool boot = false;
    bool keys = false;
    bool json = false;
};

struct Led {
    std::uint8_t number, level1, level2;
};

// ---- reading arguments -------------------------------------------------------------------------------------------

std::optional<std::uint32_t> numberOf(std::string_view text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<Led> ledOf(const std::string& text) {
    std::array<std::uint32_t, 3> values{};
    std::size_t at = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t end = i + 1 < values.size() ? text.find(':', at) : text.size();
        if (end == std::string::npos) return std::nullopt;
        const auto value = numberOf(std::string_view(text).substr(at, end - at));
        if (!value || *value > 255) return std::nullopt;
        values[i] = *value;
        at = end + 1;
    }
    if (values[0] >= kLeds) return std::nullopt;
    return Led{static_cast<std::uint8_t>(values[0]), static_cast<std::uint8_t>(values[1]),
               static_cast<std::uint8_t>(values[2])};
}

/// The panel's bytes of a typed text; nothing if they do not fit in one command.
std::optional<std::vector<std::uint8_t>> bytesOf(const std::string& text) {
    std::vector<std::uint8_t> bytes(32);
    bytes.resize(lcdConvertInputStringToArray(text.c_str(), bytes.data()));
    return bytes.size() <= KVLCD_TEXT_SIZE ? std::optional(bytes) : std::nullopt;
}

/// What is wrong with the arguments; nothing for a request that can be carried out.
std::optional<std::string> mistakeIn(const Request& request) {
    for (const std::string& text : request.text) {
        if (!bytesOf(text)) return "'" + text + "' is too long: a row of text has at most 20 bytes";
    }
    if (request.row + request.text.size() > kLastRow + 1) {
        return std::to_string(request.text.size()) + " texts from row " + std::to_string(request.row) +
               " run beyond row " + std::to_string(kLastRow) + ", the last that a panel can have";
    }
    for (const std::string& led : request.leds) {
        if (!ledOf(led))
            return "'" + led + "' is no LED: its number from 0 to 5 and two levels up to 255, as in 2:100:0";
    }
    if (request.keys && request.wait_ms == 0) return "keys can't be read without waiting for the panel";
    return std::nullopt;
}

// ---- the panel ---------------------------------------------------------------------------------------------------

bool openLine(const Request& request) {
    gdwBAUDRate = request.speed;
    const auto number = numberOf(request.port);
    return (number ? lcdOpenCom(*number, request.speed) : lcdOpenComString(request.port.c_str(), request.speed)) > 0;
}

/// From here on every command waits for its reply.
bool isThere() {
    gfDefaultWait = 1;
    for (int i = 0; i < kQuestions; ++i) {
        if (lcdPing() == 0) return true;
    }
    return false;
}

bool showText(const Request& request) {
    std::uint32_t row = request.row;
    return std::ranges::all_of(request.text, [&](const std::string& text) {
        const auto bytes = *bytesOf(text);
        return lcdSendText(static_cast<std::uint8_t>(row++), static_cast<std::uint8_t>(request.column), bytes.data(),
                           static_cast<std::uint32_t>(bytes.size())) == 0;
    });
}

bool carryOut(const Request& request) {
    if (request.clear && lcdClear() != 0) return false;
    if (request.graphic) lcdSetKorvaneDGraphic();
    if (!showText(request)) return false;
    for (const std::string& text : request.leds) {
        const Led led = *ledOf(text);
        lcdSetLED(led.number, led.level1, led.level2);
    }
    return !request.boot || lcdStoreAsBoot() == 0;
}

/// The bytes that the panel tells of its keys, as they come: what they mean is the panel's affair.
std::optional<std::vector<std::uint8_t>> readKeys() {
    COMMAND_PACKET packet{};
    packet.command = kReadKeys;
    if (send_packet(&packet, 1) != 0) return std::nullopt;
    return std::vector<std::uint8_t>(packet.data, packet.data + packet.data_length);
}

Exit showKeys(const Request& request, const std::vector<std::uint8_t>& keys) {
    if (request.json) return writeOut(jsonText({{"keys", keys}}));
    std::string text = "keys";
    for (const std::uint8_t byte : keys) {
        char hex[8];
        std::snprintf(hex, sizeof hex, " %02X", static_cast<unsigned>(byte));
        text += hex;
    }
    return writeOut(text + "\n");
}

Exit noAnswer(const Request& request) {
    complain("the panel on '" + request.port + "' does not answer");
    return Exit::failed;
}

/// With the line open.
Exit serve(const Request& request) {
    if (request.wait_ms == 0) return carryOut(request) ? Exit::ok : noAnswer(request);
    const Patience patience(std::chrono::milliseconds(std::max(request.wait_ms / kTriesOfAReply, 1u)));
    if (!isThere() || !carryOut(request)) return noAnswer(request);
    if (!request.keys) return Exit::ok;
    const auto keys = readKeys();
    return keys ? showKeys(request, *keys) : noAnswer(request);
}

Exit show(const Request& request) {
    if (const auto mistake = mistakeIn(request)) {
        complain(*mistake);
        return Exit::usage;
    }
    if (!openLine(request)) {
        complainOf("open the panel's line", request.port);
        return Exit::failed;
    }
    const Exit result = serve(request);
    lcdCloseCom();
    return result;
}

}  // namespace

void declareLcd(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("lcd", "Show text and light LEDs on the front panel, and read its keys");
    command->footer("Example: kv lcd 1 --clear --text 'On Air' --led 0:100:0");
    auto request = std::make_shared<Request>();
    addPositional(*command, "PORT", request->port, "A port number, as kv serial lists it, or a device");
    command->add_option("--speed", request->speed, "Speed that panel and line are brought to; 19200 unless told")
        ->check(CLI::IsMember({kSlow, kFast}).description(""))
        ->type_name("BAUD");
    command->add_option("--wait", request->wait_ms, "Milliseconds to wait for a reply, 0 for no reply; 500 unless told")
        ->check(CLI::Range(0u, 3600000u).description(""))
        ->type_name("MS");
    command->add_flag("--clear", request->clear, "Empty the display first");
    command->add_flag("--graphic", request->graphic, "Load the eight characters of the graphic");
    addText(*command, "--text", request->text,
            "A text; further ones go to the rows below. \\065, \\x41 and "
            "\\b01000001 are bytes")
        ->allow_extra_args(false)
        ->type_name("TEXT");
    command->add_option("--row", request->row, "Row of the first text, from 0")
        ->check(CLI::Range(0u, 255u).description(""))
        ->type_name("N");
    command->add_option("--column", request->column, "Column of all texts, from 0")
        ->check(CLI::Range(0u, 255u).description(""))
        ->type_name("N");
    addText(*command, "--led", request->leds, "LED from 0 to 5, and the levels of its two colours")
        ->allow_extra_args(false)
        ->type_name("N:LEVEL:LEVEL");
    command->add_flag("--boot", request->boot, "Make the panel start up as it is then");
    command->add_flag("--keys", request->keys, "Print what the panel tells of its keys, as bytes");
    command->add_flag("--json", request->json, "Print the keys as a JSON object");
    command->callback([&chosen, request] { chosen = [request] { return show(*request); }; });
}

}  // namespace kv::tool
