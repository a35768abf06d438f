// Settings: a value of the full default tree read by its path, and the default file opened and saved, beside the XML
// library itself doing the least that gives the same.
//
// The peer of a read is a bare walk: the same names compared in the same elements, without a lock and without the text
// of a path to be taken apart. The peer of an opening parses the file, and that of a save prints a tree to it.
#include <cstdlib>
#include <string>
#include <tinyxml.h>

#include "bench/scratch.h"
#include "bench/topics.h"
#include "kvcfg.h"

namespace kv::bench {
namespace {

constexpr int kReadsPerPass = 1000;

struct Value {
    const char* what;
    const char* key;
    const char* name;
};

constexpr Value kFirst{"first", "ZMW\\Advanced", "EnableLargeRW"};
constexpr Value kLast{"last", "MediaKiln\\Advanced", "WriteRTIndexFile"};

/// The names of a value's path, found in advance.
std::vector<std::string> namesOf(const Value& value) {
    std::vector<std::string> names;
    std::string path = std::string(value.key) + "\\" + value.name;
    for (std::size_t at; (at = path.find('\\')) != std::string::npos; path.erase(0, at + 1)) {
        names.push_back(path.substr(0, at));
    }
    names.push_back(path);
    return names;
}

void compareReads(Table& table, KVTiXmlConfig* store, TiXmlElement* root, const Value& value) {
    const std::vector<std::string> names = namesOf(value);
    table.compare(
        {std::string("kvCFGValueDword, ") + value.what + " key", "bare walk of the XML tree",
         callsPerPass(kReadsPerPass)},
        [&] {
            for (int i = 0; i < kReadsPerPass; ++i) {
                std::uint32_t number = 0;
                require(kvCFGValueDword(store, value.key, value.name, &number, 0) == 0, "a default is missing");
                benchmark::DoNotOptimize(number);
            }
        },
        [&] {
            for (int i = 0; i < kReadsPerPass; ++i) {
                TiXmlElement* at = root;
                for (const std::string& name : names) at = at->FirstChildElement(name.c_str());
                int number = 0;
                at->QueryIntAttribute("Value", &number);
                benchmark::DoNotOptimize(number);
            }
        });
}

void compareOpening(Table& table, const std::string& file) {
    table.compare(
        {"kvCFGOpen and kvCFGClose of the default file", "TiXmlDocument::LoadFile", callsPerPass(1)},
        [&] {
            KVTiXmlConfig* store = kvCFGOpen(file.c_str(), 0);
            require(store != nullptr, "the file can't be opened");
            kvCFGClose(store, 0);
        },
        [&] {
            TiXmlDocument document;
            require(document.LoadFile(file.c_str()), "the file can't be read");
        });
}

void compareSaving(Table& table, KVTiXmlConfig* store, TiXmlDocument& document, const std::string& copy) {
    std::uint32_t number = 1;  // the default, so that each change is one
    const auto change = [store, &number] {
        ++number;
        kvCFGValueDword(store, kFirst.key, kFirst.name, &number, 1);
    };
    const auto printed = [&document, copy] { require(document.SaveFile(copy.c_str()), "the file can't be written"); };
    table.compare(
        {"KVTiXmlConfig::SaveConfig: read, print, replace", "TiXmlDocument::SaveFile", callsPerPass(1)},
        [&] {
            change();
            require(store->SaveConfig() == 1, "the store can't be saved");
        },
        printed);
    table.compare(
        {"kvCFGSave: the same, and two turns of the backups", "TiXmlDocument::SaveFile", callsPerPass(1)},
        [&] {
            change();
            require(kvCFGSave(store, nullptr, 1) == 0, "the store can't be saved");
        },
        printed);
}

}  // namespace

void measureSettings(const Scale& scale) {
    const ScratchFolder folder;
    const std::string file = folder.path() + "/config.xml";
    KVTiXmlConfig* store = kvCFGOpen(file.c_str(), 0);
    TiXmlDocument document;
    require(store != nullptr && document.LoadFile(file.c_str()), "the default file can't be made");
    Table table("settings: the full default tree", scale);
    compareReads(table, store, document.RootElement(), kFirst);
    compareReads(table, store, document.RootElement(), kLast);
    compareOpening(table, file);
    compareSaving(table, store, document, folder.path() + "/copy.xml");
    kvCFGClose(store, 0);
}

}  // namespace kv::bench
