// The store that kv cfg works on, and what it holds as the program speaks of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kvcfg.h"

namespace kv::tool {

/// One key or value. Paths have backslashes, as the library takes them.
struct Setting {
    std::string path;
    std::uint32_t type = 0;
    std::string text;         // a string's text, a binary's digits
    std::int32_t number = 0;  // a dword's number, as its file shows it
};

/// "key", "string", "dword", "binary", or "type 7".
std::string nameOfType(std::uint32_t type);

/// The value as one text.
std::string valueText(const Setting& setting);

class SettingsStore {
public:
    /// The default store for an empty path, else that of a file, which has to exist. What is wrong is told.
    static std::optional<SettingsStore> open(const std::string& path);

    SettingsStore(SettingsStore&& other) noexcept;
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;
    SettingsStore& operator=(SettingsStore&&) = delete;
    ~SettingsStore();

    KVTiXmlConfig* handle() const { return handle_; }
    std::string path() const;

    /// Nothing if it is not there.
    std::optional<Setting> find(const std::string& path) const;

    /// The names in a key, in order, each once; an empty path is the top.
    std::vector<std::string> namesIn(const std::string& path) const;

    /// Whether the changes are in the file now; what is wrong is told. `force` goes past the setting that disables it.
    bool save(bool force) const;

private:
    explicit SettingsStore(KVTiXmlConfig* handle) : handle_(handle) {}

    KVTiXmlConfig* handle_;
};

/// A path split behind its last backslash, into key and name; the key is empty for a path of one name.
struct SplitSetting {
    std::string key;
    std::string name;
};
SplitSetting splitSetting(const std::string& path);

/// The path with "/", which no name holds, taken as a backslash, which shells take for themselves.
std::string withBackslashes(std::string path);

}  // namespace kv::tool
