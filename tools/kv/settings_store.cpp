// The library makes a store that is not there and calls a save done that reached no file. Somebody at a shell is told.
#include "kv/settings_store.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <utility>

#include "kv/complaint.h"
#include "kvos/attributes.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;

std::string textOf(KVTiXmlConfig* store, const SplitSetting& at) {
    std::uint32_t length = 0;
    if (kvCFGValueString(store, at.key.c_str(), at.name.c_str(), nullptr, &length, 0) == kFailed) return {};
    std::string text(length + std::size_t{1}, '\0');
    kvCFGValueString(store, at.key.c_str(), at.name.c_str(), text.data(), &length, 0);
    text.resize(length);
    return text;
}

}  // namespace

std::string nameOfType(std::uint32_t type) {
    constexpr std::array kNames{"key", "string", "dword", "binary"};
    return type < kNames.size() ? kNames[type] : type == kFailed ? "none" : "type " + std::to_string(type);
}

std::string valueText(const Setting& setting) {
    return setting.type == KVCFG_DWORD ? std::to_string(setting.number) : setting.text;
}

std::optional<SettingsStore> SettingsStore::open(const std::string& path) {
    if (!path.empty() && kvOSFileExists(path.c_str()) == 0) {
        complainOf("open settings", path);
        return std::nullopt;
    }
    KVTiXmlConfig* const handle = path.empty() ? kvCFGCheckHandle(KVSTDCONFIG) : kvCFGOpen(path.c_str(), 0);
    if (handle != nullptr) return SettingsStore(handle);
    const std::string name = path.empty() ? "config.xml" : path;
    if (errno == EINVAL) {
        complain("cannot open settings '" + name + "': it is XML, but holds no settings");
    } else {
        complainOf("open settings", name);
    }
    return std::nullopt;
}

SettingsStore::SettingsStore(SettingsStore&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

SettingsStore::~SettingsStore() {
    if (handle_ != nullptr) kvCFGClose(handle_, 0);
}

std::string SettingsStore::path() const {
    std::array<char, 4096> buffer{};
    kvCFGPath(handle_, buffer.data());
    return buffer.data();
}

std::optional<Setting> SettingsStore::find(const std::string& path) const {
    if (kvCFGKeyExists(handle_, path.c_str()) == 0) return std::nullopt;
    const SplitSetting at = splitSetting(path);
    Setting setting;
    setting.path = path;
    setting.type = kvCFGGetType(handle_, path.c_str());
    // A top element that is a value is in no key; such a file was not made by the library.
    if (at.key.empty()) return setting;
    std::uint32_t number = 0;
    if (setting.type == KVCFG_DWORD) {
        kvCFGValueDword(handle_, at.key.c_str(), at.name.c_str(), &number, 0);
        setting.number = static_cast<std::int32_t>(number);
    } else if (setting.type != KVCFG_KEY) {
        setting.text = textOf(handle_, at);
    }
    return setting;
}

std::vector<std::string> SettingsStore::namesIn(const std::string& path) const {
    std::vector<std::string> names;
    std::set<std::string> seen;  // two of one name apart from each other would be gone through for ever
    std::array<char, 64> name{};
    const char* const key = path.empty() ? nullptr : path.c_str();
    while (kvCFGGetNext(handle_, key, name.data(), name.data(), nullptr) != kFailed &&
           seen.insert(name.data()).second) {
        names.emplace_back(name.data());
    }
    return names;
}

bool SettingsStore::save(bool force) const {
    const std::string file = path();
    if (kvOSFileExists(file.c_str()) == 0) {
        complain("cannot save settings '" + file + "': there is no such file, and no folder for it (see kv cfg init)");
        return false;
    }
    if (kvOSFileIsReadOnly(file.c_str()) != 0) {
        complain("cannot save settings '" + file + "': the file is read-only");
        return false;
    }
    if (kvCFGSave(handle_, nullptr, force ? 1 : 0) != 0) {
        complainOf("save settings", file);
        return false;
    }
    if (kvCFGIsModified(handle_) == 0) return true;
    complain("cannot save settings '" + file + "': its DisableSave is set (--force saves all the same)");
    return false;
}

SplitSetting splitSetting(const std::string& path) {
    const std::size_t at = path.rfind('\\');
    if (at == std::string::npos) return {"", path};
    return {path.substr(0, at), path.substr(at + 1)};
}

std::string withBackslashes(std::string path) {
    std::ranges::replace(path, '/', '\\');
    return path;
}

}  // namespace kv::tool
