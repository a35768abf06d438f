// kv split: how the library takes a path apart, and the number it finds in the name. No file is looked at.
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/json_text.h"
#include "kv/standard_streams.h"
#include "kv/table.h"
#include "kvos/file.h"
#include "kvos/naming.h"

namespace kv::tool {
namespace {

using PathText = std::array<char, 4096>;

struct Request {
    std::string path;
    bool json = false;
};

struct Parts {
    PathText drive{}, directory{}, name{}, extension{}, base{};
    std::int32_t number = 0;
    std::uint32_t digits = 0;
};

bool takeApart(const std::string& path, Parts& parts) {
    kvOSSetLastError(0);
    kvOSSplitPath(path.c_str(), parts.drive.data(), parts.directory.data(), parts.name.data(), parts.extension.data());
    if (kvOSGetLastError() != 0) return false;
    parts.number = GetBaseName(path.c_str(), parts.base.data(), &parts.digits);
    return true;
}

std::string asTable(const Parts& parts) {
    const bool numbered = parts.digits != 0;
    Table table({Align::left, Align::left});
    const auto add = [&](const char* label, const std::string& value) {
        table.add({label, value.empty() ? "-" : value});
    };
    add("drive", parts.drive.data());
    add("directory", parts.directory.data());
    add("name", parts.name.data());
    add("extension", parts.extension.data());
    add("base", parts.base.data());
    add("number", numbered ? std::to_string(parts.number) : "");
    add("digits", numbered ? std::to_string(parts.digits) : "");
    return table.text();
}

std::string asJson(const Parts& parts) {
    return jsonText({{"drive", parts.drive.data()},
                     {"directory", parts.directory.data()},
                     {"name", parts.name.data()},
                     {"extension", parts.extension.data()},
                     {"base", parts.base.data()},
                     {"number", parts.number},
                     {"digits", parts.digits}});
}

Exit split(const Request& request) {
    Parts parts;
    if (!takeApart(request.path, parts)) {
        complainOf("split", request.path);
        return Exit::failed;
    }
    return writeOut(request.json ? asJson(parts) : asTable(parts));
}

}  // namespace

void declareSplit(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("split", "Take a path apart: directory, name, extension, number");
    command->footer("Example: kv split /media/clip0012.tga");
    auto request = std::make_shared<Request>();
    addPositional(*command, "PATH", request->path, "Path to take apart; need not exist");
    command->add_flag("--json", request->json, "Print one JSON object");
    command->callback([&chosen, request] { chosen = [request] { return split(*request); }; });
}

}  // namespace kv::tool
