#include "demo/settings.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "kvcfg.h"

namespace demo {
namespace {

constexpr const char* kKey = "ZMW\\Config";
constexpr const char* kName = "DefaultHoriz";

struct CloseStore {
    void operator()(KVTiXmlConfig* store) const { kvCFGClose(store, 0); }
};
using Store = std::unique_ptr<KVTiXmlConfig, CloseStore>;

Store openStore(const std::string& path) { return Store(kvCFGOpen(path.c_str(), 0)); }

std::optional<std::uint32_t> value(const Store& store) {
    std::uint32_t number = 0;
    if (!store || kvCFGValueDword(store.get(), kKey, kName, &number, 0) != 0) return std::nullopt;
    return number;
}

void checkValue(const std::string& what, const Store& store, std::uint32_t expected, Report& report) {
    const auto found = value(store);
    const std::string told = found ? std::string(kName) + " is " + std::to_string(*found) : "no value";
    report.line(what, told, found == expected);
}

bool change(const Store& store, std::uint32_t number) {
    return kvCFGValueDword(store.get(), kKey, kName, &number, 1) == 0 && kvCFGSave(store.get(), nullptr, 0) == 0;
}

}  // namespace

void showSettings(const Clip& clip, Report& report) {
    report.headingWithoutTransfers("Settings, in config.xml");
    const std::string path = clip.path("config.xml");
    {
        const Store store = openStore(path);
        checkValue("open a file that is not there", store, 720, report);
        const bool saved = store && change(store, 1920);
        report.line("change a value and save", saved ? "saved, with backups" : "not saved", saved);
    }
    checkValue("open it again", openStore(path), 1920, report);

    const auto half = std::filesystem::file_size(path) / 2;
    std::filesystem::resize_file(path, half);
    checkValue("cut it in half and open it", openStore(path), 1920, report);
    const bool kept = std::filesystem::file_size(path + ".bad") == half;
    report.line("look for the damaged file", kept ? "kept as config.xml.bad" : "gone", kept);
}

}  // namespace demo
