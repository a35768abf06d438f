// kv cfg: the settings, by their paths.
//
// The library leaves a text alone that differs in case only, and bytes that go on behind the old ones, and makes a
// missing top key without what was to be in it. Here a value that was set is there.
#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/settings_listing.h"
#include "kv/settings_store.h"
#include "kv/standard_streams.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/naming.h"

namespace kv::tool {
namespace {

struct Request {
    std::string file;
    std::string path;
    std::string value;
    std::string type;
    bool json = false;
    bool force = false;
};

Exit failure(const std::string& action, const std::string& path, const std::string& why) {
    complain("cannot " + action + " '" + path + "': " + why);
    return Exit::failed;
}

// ---- reading -----------------------------------------------------------------------------------------------------

Exit get(const SettingsStore& store, const Request& request) {
    const auto setting = store.find(request.path);
    if (!setting) return failure("get", request.path, "there is no such setting");
    if (setting->type == KVCFG_KEY) return failure("get", request.path, "it is a key (see kv cfg list)");
    return writeOut(request.json ? settingJson(*setting) : valueText(*setting) + "\n");
}

Exit list(const SettingsStore& store, const Request& request) {
    if (!request.path.empty() && !store.find(request.path))
        return failure("list", request.path, "there is no such key");
    return writeOut(request.json ? settingsJson(store, request.path) : settingsTree(store, request.path));
}

Exit showPath(const SettingsStore& store, const Request&) { return writeOut(store.path() + "\n"); }

// ---- values ------------------------------------------------------------------------------------------------------

/// A number in decimal, from -2147483648 to 4294967295, or in hexadecimal with "0x".
std::optional<std::uint32_t> parseDword(const std::string& text) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    const char* const begin = text.data() + (isHex ? 2 : 0);
    const char* const end = text.data() + text.size();
    std::int64_t number = 0;
    const auto [rest, error] = std::from_chars(begin, end, number, isHex ? 16 : 10);
    if (error != std::errc{} || rest != end || begin == end || (isHex && number < 0)) return std::nullopt;
    if (number < INT32_MIN || number > UINT32_MAX) return std::nullopt;
    return static_cast<std::uint32_t>(number);
}

std::optional<std::vector<unsigned char>> parseBytes(const std::string& text) {
    std::vector<unsigned char> bytes;
    for (std::size_t at = 0; at < text.size(); at += 2) {
        const char* const end = text.data() + std::min(at + 2, text.size());
        unsigned char byte = 0;
        const auto [rest, error] = std::from_chars(text.data() + at, end, byte, 16);
        if (error != std::errc{} || rest != end || end - (text.data() + at) != 2) return std::nullopt;
        bytes.push_back(byte);
    }
    return bytes;
}

/// The type to store a value in: the one asked for, that of the old value, or what the new one looks like.
std::string typeFor(const std::optional<Setting>& old, const Request& request) {
    if (!request.type.empty()) return request.type;
    if (old) return nameOfType(old->type);
    return parseDword(request.value) ? "dword" : "string";
}

void storeDword(KVTiXmlConfig* store, const SplitSetting& at, std::uint32_t number) {
    kvCFGValueDword(store, at.key.c_str(), at.name.c_str(), &number, 1);
}

void storeString(KVTiXmlConfig* store, const SplitSetting& at, std::string text) {
    std::uint32_t length = 0;
    char none[] = "";
    kvCFGValueString(store, at.key.c_str(), at.name.c_str(), none, &length, 1);
    if (text.empty()) kvCFGAddKeyString(store, at.key.c_str(), at.name.c_str(), "", KVCFG_STRING, nullptr);
    kvCFGValueString(store, at.key.c_str(), at.name.c_str(), text.data(), &length, 1);
}

void storeBytes(KVTiXmlConfig* store, const SplitSetting& at, std::vector<unsigned char> bytes) {
    unsigned char none = 0;
    std::uint32_t length = 0;
    kvCFGValueBinary(store, at.key.c_str(), at.name.c_str(), &none, &length, 1);
    length = static_cast<std::uint32_t>(bytes.size());
    bytes.push_back(0);  // never an empty vector, whose data may be null
    kvCFGValueBinary(store, at.key.c_str(), at.name.c_str(), bytes.data(), &length, 1);
}

/// Makes the key first; the first of two calls makes a missing top key alone.
void makeKey(KVTiXmlConfig* store, const std::string& key) {
    for (int i = 0; i < 2; ++i) kvCFGAddKeyString(store, key.c_str(), nullptr, nullptr, KVCFG_KEY, nullptr);
}

/// What is wrong with a value for its type; nothing if it was stored.
std::optional<std::string> storeValue(KVTiXmlConfig* store, const SplitSetting& at, const std::string& type,
                                      const std::string& value) {
    const auto number = parseDword(value);
    const auto bytes = parseBytes(value);
    if (type == "dword" && !number) return "'" + value + "' is no number of 32 bits";
    if (type == "binary" && !bytes) return "'" + value + "' is not pairs of hexadecimal digits";
    if (type != "dword" && type != "binary" && type != "string") return "it is a " + type;
    makeKey(store, at.key);
    if (type == "dword") storeDword(store, at, *number);
    if (type == "binary") storeBytes(store, at, *bytes);
    if (type == "string") storeString(store, at, value);
    return std::nullopt;
}

/// Whether it holds that value. The library leaves an element alone that begins with something else than a text.
bool holds(const Setting& setting, const std::string& value) {
    if (setting.type == KVCFG_DWORD) return parseDword(value) == static_cast<std::uint32_t>(setting.number);
    return setting.type == KVCFG_BINARY ? parseBytes(value) == parseBytes(setting.text) : setting.text == value;
}

// ---- changes -----------------------------------------------------------------------------------------------------

Exit saved(const SettingsStore& store, const Request& request) {
    return store.save(request.force) ? Exit::ok : Exit::failed;
}

Exit set(const SettingsStore& store, const Request& request) {
    const auto old = store.find(request.path);
    const SplitSetting at = splitSetting(request.path);
    const std::string type = typeFor(old, request);
    if (at.key.empty()) return failure("set", request.path, "a value is in a key, as in KEY\\NAME");
    if (old && nameOfType(old->type) != type) {
        return failure("set", request.path, "it is there as a " + nameOfType(old->type) + " (see kv cfg rm)");
    }
    if (const auto wrong = storeValue(store.handle(), at, type, request.value)) {
        return failure("set", request.path, *wrong);
    }
    const auto now = store.find(request.path);
    if (!now || nameOfType(now->type) != type) return failure("set", request.path, "that can't be a name");
    if (!holds(*now, request.value)) {
        return failure("set", request.path, "it holds something else ahead of its value (see kv cfg rm)");
    }
    return saved(store, request);
}

Exit removeSetting(const SettingsStore& store, const Request& request) {
    const SplitSetting at = splitSetting(request.path);
    if (at.key.empty() && store.find(at.name)) return failure("remove", request.path, "a top key stays");
    if (kvCFGDeleteValue(store.handle(), at.key.c_str(), at.name.c_str()) != 0) {
        return failure("remove", request.path, "there is no such setting");
    }
    return saved(store, request);
}

/// What both need: a setting that is there, and a name that is free in its key.
std::optional<std::string> clash(const SettingsStore& store, const Request& request) {
    const SplitSetting at = splitSetting(request.path);
    if (!store.find(request.path)) return "there is no such setting";
    if (store.find(at.key.empty() ? request.value : at.key + "\\" + request.value)) {
        return "'" + request.value + "' is there already";
    }
    return std::nullopt;
}

Exit renameSetting(const SettingsStore& store, const Request& request) {
    const SplitSetting at = splitSetting(request.path);
    if (const auto wrong = clash(store, request)) return failure("rename", request.path, *wrong);
    if (at.key.empty()) return failure("rename", request.path, "a top key stays");
    if (kvCFGRenameKey(store.handle(), at.key.c_str(), at.name.c_str(), request.value.c_str()) == 0xFFFFFFFF) {
        return failure("rename", request.path, "'" + request.value + "' can't be a name");
    }
    return saved(store, request);
}

Exit copySetting(const SettingsStore& store, const Request& request) {
    if (const auto wrong = clash(store, request)) return failure("copy", request.path, *wrong);
    if (kvCFGCopyBranch(store.handle(), request.path.c_str(), request.value.c_str()) != 0) {
        return failure("copy", request.path, "'" + request.value + "' can't be a name");
    }
    return saved(store, request);
}

// ---- the folder --------------------------------------------------------------------------------------------------

Exit init() {
    char folder[4096] = "";
    if (kvOSGetConfigDir(folder, 0) != 0 && (MakeDirStructure(folder) != 0 || kvOSFileIsDir(folder) == 0)) {
        complainOf("make folder", folder);
        return Exit::failed;
    }
    return writeOut(std::string(folder) + "\n");
}

// ---- the command -------------------------------------------------------------------------------------------------

using Run = Exit(const SettingsStore&, const Request&);

CLI::App& add(CLI::App& cfg, Chosen& chosen, const std::shared_ptr<Request>& request, Run& run, const char* name,
              const char* about) {
    auto* command = cfg.add_subcommand(name, about);
    command->callback([&chosen, request, &run] {
        chosen = [request, &run] {
            request->path = withBackslashes(request->path);
            const auto store = SettingsStore::open(request->file);
            return store ? run(*store, *request) : Exit::failed;
        };
    });
    return *command;
}

void addReading(CLI::App& cfg, Chosen& chosen, const std::shared_ptr<Request>& request) {
    auto& getCommand = add(cfg, chosen, request, get, "get", "Print a value");
    addPositional(getCommand, "PATH", request->path, "Value, as in 'ZMW\\Control0\\EditOn' or ZMW/Control0/EditOn");
    getCommand.add_flag("--json", request->json, "Print one JSON object");

    auto& listCommand = add(cfg, chosen, request, list, "list", "Print keys and values as a tree");
    addPositional(listCommand, "PATH", request->path, "Key to begin with; all unless told");
    listCommand.get_option("PATH")->required(false);
    listCommand.add_flag("--json", request->json, "Print one JSON array of all keys and values");

    add(cfg, chosen, request, showPath, "path", "Print the path of the file");
}

void addChanges(CLI::App& cfg, Chosen& chosen, const std::shared_ptr<Request>& request) {
    auto& setCommand = add(cfg, chosen, request, set, "set", "Store a value, made if it is missing, and save");
    addPositional(setCommand, "PATH", request->path, "Value to store");
    addPositional(setCommand, "VALUE", request->value, "Number (decimal or 0x...), text, or hexadecimal digits");
    setCommand.add_option("-t,--type", request->type, "Type of a new value; unless told, what VALUE looks like")
        ->check(CLI::IsMember({"string", "dword", "binary"}));

    auto& rmCommand =
        add(cfg, chosen, request, removeSetting, "rm", "Remove a value, or a key with all in it, and save");
    addPositional(rmCommand, "PATH", request->path, "What to remove");

    auto& renameCommand = add(cfg, chosen, request, renameSetting, "rename", "Rename a key or value, and save");
    addPositional(renameCommand, "PATH", request->path, "What to rename");
    addPositional(renameCommand, "NAME", request->value, "New name");

    auto& copyCommand = add(cfg, chosen, request, copySetting, "copy", "Copy a key or value beside itself, and save");
    addPositional(copyCommand, "PATH", request->path, "What to copy");
    addPositional(copyCommand, "NAME", request->value, "Name of the copy");

    for (CLI::App* command : {&setCommand, &rmCommand, &renameCommand, &copyCommand}) {
        command->add_flag("--force", request->force, "Save even if the settings disable saving");
    }
}

}  // namespace

void declareCfg(CLI::App& app, Chosen& chosen) {
    auto* cfg = app.add_subcommand("cfg", "Show and change settings");
    cfg->footer("Example: kv cfg set 'ZMW\\Advanced\\Debug\\DebugLevel' 5");
    cfg->require_subcommand(1);
    cfg->fallthrough();
    auto request = std::make_shared<Request>();
    cfg->add_option("-f,--file", request->file, "Settings file; the default one unless told");
    addReading(*cfg, chosen, request);
    addChanges(*cfg, chosen, request);
    auto* initCommand = cfg->add_subcommand("init", "Make the folder of the default settings, and print where it is");
    initCommand->callback([&chosen] { chosen = init; });
}

}  // namespace kv::tool
