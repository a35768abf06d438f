// Stores in scratch folders, and short forms of the calls on them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kvcfg.h"
#include "support/scratch.h"

namespace kvtest {

inline constexpr std::uint32_t kFailed = 0xFFFFFFFF;

/// A store in a file of its own, closed without saving when the object goes.
class OpenStore {
public:
    explicit OpenStore(const std::string& path, std::uint32_t flags = 0) : handle_(kvCFGOpen(path.c_str(), flags)) {}
    ~OpenStore() { close(); }
    OpenStore(const OpenStore&) = delete;
    OpenStore& operator=(const OpenStore&) = delete;

    operator KVTiXmlConfig*() const { return handle_; }
    bool isOpen() const { return handle_ != nullptr; }
    std::uint32_t close(std::uint32_t save = 0) {
        KVTiXmlConfig* const handle = handle_;
        handle_ = nullptr;
        return handle == nullptr ? 0 : kvCFGClose(handle, save);
    }

private:
    KVTiXmlConfig* handle_;
};

/// A configuration file with these elements in its root.
inline std::string configWith(std::string_view elements) {
    return "<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n<KorvaneConfig>\n" + std::string(elements) +
           "\n</KorvaneConfig>\n";
}

inline std::optional<std::uint32_t> dwordOf(KVTiXmlConfig* store, const char* key, const char* name) {
    std::uint32_t value = 0x12345678;
    if (kvCFGValueDword(store, key, name, &value, 0) != 0) return std::nullopt;
    return value;
}

inline std::uint32_t setDword(KVTiXmlConfig* store, const char* key, const char* name, std::uint32_t value) {
    return kvCFGValueDword(store, key, name, &value, 1);
}

inline std::optional<std::string> stringOf(KVTiXmlConfig* store, const char* key, const char* name) {
    std::uint32_t length = 0;
    if (kvCFGValueString(store, key, name, nullptr, &length, 0) == kFailed) return std::nullopt;
    std::string text(length + 1, '#');
    text[0] = '\0';
    if (kvCFGValueString(store, key, name, text.data(), &length, 0) != 0) return std::nullopt;
    return std::string(text.c_str());
}

inline std::uint32_t setString(KVTiXmlConfig* store, const char* key, const char* name, std::string text) {
    std::uint32_t length = 0;
    return kvCFGValueString(store, key, name, text.data(), &length, 1);
}

/// The names in a key, in order; null for the top.
inline std::vector<std::string> namesIn(KVTiXmlConfig* store, const char* key) {
    std::vector<std::string> names;
    char name[64] = "";
    while (kvCFGGetNext(store, key, name, name, nullptr) != kFailed) names.push_back(name);
    return names;
}

/// Gives the process a configuration directory, below its own home. False where the machine has one for all users: that
/// one is nothing to test with.
inline bool makeConfigDirectory(std::string& directory) {
    if (std::filesystem::exists("/Library/Application Support")) return false;
    directory = std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane/";
    return std::filesystem::create_directories(directory);
}

/// A test of the default store, in a directory of its own.
class DefaultStore : public ::testing::Test {
protected:
    void SetUp() override {
        if (!makeConfigDirectory(directory_)) GTEST_SKIP() << "this machine has settings for all its users";
    }
    std::string path() const { return directory_ + "config.xml"; }
    std::string directory_;
};

}  // namespace kvtest
