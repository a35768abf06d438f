// kv serial: the serial ports of this machine, by the numbers that open them.
//
// Nothing is opened: a port counts as there if the name that its number would open is.
#include "kvos/serial.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/json_text.h"
#include "kv/standard_streams.h"
#include "kv/table.h"
#include "kvos/attributes.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kLastPort = 100;

struct Request {
    bool json = false;
    bool renew = false;
};

struct Port {
    std::uint32_t number;
    std::string name;    // what the number opens
    std::string device;  // what that stands for
};

/// Of these names the first that is there, as the open takes it.
std::optional<Port> firstOf(std::uint32_t number, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (kvOSFileExists(name.c_str()) == 0) continue;
        std::error_code isNoLink;
        const auto target = std::filesystem::read_symlink(name, isNoLink);
        return Port{number, name, isNoLink ? name : target.string()};
    }
    return std::nullopt;
}

std::vector<Port> allPorts() {
    char folder[4096] = "";
    kvOSGetConfigDir(folder, 0);
    std::vector<Port> ports;
    for (std::uint32_t number = 0; number <= kLastPort; ++number) {
        const std::string shown = "ttyS" + std::to_string(number - 1);
        const auto port = number == 0
                              ? firstOf(0, {"/dev/tty.Kona Serial", "/dev/tty.RS422 Deck Control", "/dev/ttyS0"})
                              : firstOf(number, {folder + shown, "/dev/" + shown});
        if (port) ports.push_back(*port);
    }
    return ports;
}

std::string asTable(const std::vector<Port>& ports) {
    if (ports.empty()) return {};
    Table table({Align::right, Align::left, Align::left});
    table.add({"PORT", "DEVICE", "OPENED AS"});
    for (const Port& port : ports) table.add({std::to_string(port.number), port.device, port.name});
    return table.text();
}

std::string asJson(const std::vector<Port>& ports) {
    auto document = nlohmann::ordered_json::array();
    for (const Port& port : ports) {
        document.push_back({{"port", port.number}, {"device", port.device}, {"name", port.name}});
    }
    return jsonText(document);
}

Exit show(const Request& request) {
    kvOSSerialSetupSystem(request.renew ? 1 : 0);
    const auto ports = allPorts();
    if (ports.empty()) complain("no serial port is here");
    const Exit written = writeOut(request.json ? asJson(ports) : asTable(ports));
    return ports.empty() ? Exit::failed : written;
}

}  // namespace

void declareSerial(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("serial", "List the serial ports by the numbers that open them");
    command->footer("Example: kv serial --renew");
    auto request = std::make_shared<Request>();
    command->add_flag("--renew", request->renew, "Number the adapters that are there now anew");
    command->add_flag("--json", request->json, "Print one JSON array");
    command->callback([&chosen, request] { chosen = [request] { return show(*request); }; });
}

}  // namespace kv::tool
