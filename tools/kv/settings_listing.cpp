#include "kv/settings_listing.h"

#include <nlohmann/json.hpp>

#include "kv/json_text.h"
#include "kv/printable.h"

namespace kv::tool {
namespace {

std::string below(const std::string& path, const std::string& name) { return path.empty() ? name : path + "\\" + name; }

std::string label(const Setting& setting, const std::string& name) {
    if (setting.type == KVCFG_KEY) return name;
    const std::string value = printable(valueText(setting));
    return name + " = " + (setting.type == KVCFG_STRING ? "\"" + value + "\"" : value);
}

void addTree(const SettingsStore& store, const std::string& path, const std::string& indent, std::string& text) {
    const auto names = store.namesIn(path);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        const auto setting = store.find(below(path, names[i]));
        if (!setting) continue;
        text += indent + (isLast ? "└── " : "├── ") + label(*setting, names[i]) + "\n";
        addTree(store, setting->path, indent + (isLast ? "    " : "│   "), text);
    }
}

nlohmann::ordered_json asJson(const Setting& setting) {
    nlohmann::ordered_json object{{"path", setting.path}, {"type", nameOfType(setting.type)}};
    if (setting.type == KVCFG_DWORD) {
        object["value"] = setting.number;
    } else if (setting.type != KVCFG_KEY) {
        object["value"] = setting.text;
    }
    return object;
}

void addJson(const SettingsStore& store, const std::string& path, nlohmann::ordered_json& array) {
    for (const std::string& name : store.namesIn(path)) {
        const auto setting = store.find(below(path, name));
        if (!setting) continue;
        array.push_back(asJson(*setting));
        addJson(store, setting->path, array);
    }
}

}  // namespace

std::string settingsTree(const SettingsStore& store, const std::string& path) {
    std::string text = (path.empty() ? printable(store.path()) : path) + "\n";
    addTree(store, path, "", text);
    return text;
}

std::string settingsJson(const SettingsStore& store, const std::string& path) {
    auto array = nlohmann::ordered_json::array();
    addJson(store, path, array);
    return jsonText(array);
}

std::string settingJson(const Setting& setting) { return jsonText(asJson(setting)); }

}  // namespace kv::tool
