// Settings as a tree for people and as JSON for programs.
#pragma once

#include <string>

#include "kv/settings_store.h"

namespace kv::tool {

/// What is in a key, at any depth, as a tree; the top for an empty path.
std::string settingsTree(const SettingsStore& store, const std::string& path);

/// The same as one JSON array of objects: path, type and value, keys included.
std::string settingsJson(const SettingsStore& store, const std::string& path);

/// One setting as a JSON object.
std::string settingJson(const Setting& setting);

}  // namespace kv::tool
