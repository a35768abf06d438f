// Configuration files: any bytes as a file, opened, walked, changed, saved and opened again.
//
// What must hold: an opening ends, gives a store or, for a file that it leaves alone, none; what was saved can be read
// again with the change in it; the scan for depth never says less than the XML library goes down.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tinyxml.h>
#include <unistd.h>

#include "border/nesting.h"
#include "fuzz/input.h"
#include "kvcfg.h"

namespace {

using kv::fuzz::must;

/// A folder of this process, the file in it being made anew for each input.
const std::string& folder() {
    static const std::string path = [] {
        std::string text = (std::filesystem::temp_directory_path() / "fuzz-settings-XXXXXX").string();
        must(mkdtemp(text.data()) != nullptr, "there is a scratch folder");
        return text;
    }();
    return path;
}

std::size_t depthOf(const TiXmlNode& node) {
    std::size_t deepest = 0;
    for (const TiXmlNode* at = node.FirstChild(); at != nullptr; at = at->NextSibling()) {
        if (at->ToElement() != nullptr) deepest = std::max(deepest, depthOf(*at) + 1);
    }
    return deepest;
}

/// Inputs of a fuzzer are too short to exhaust the stack, so that this one may be read without a look at its depth.
void compareDepths(std::string text) {
    text.resize(std::min(text.find('\0'), text.size()));
    TiXmlDocument document;
    document.Parse(text.c_str(), nullptr, TIXML_ENCODING_LEGACY);
    must(depthOf(document) <= kv::border::deepestNesting(text), "the scan goes as deep as the XML library");
}

void walkAll(KVTiXmlConfig* store) {
    must(kvCFGEnumKey(store, nullptr, nullptr, nullptr, 1) == 1, "the top can be walked");
    char name[64] = "";
    for (int i = 0; i < 1000 && kvCFGGetNext(store, nullptr, name, name, nullptr) != 0xFFFFFFFF; ++i) {
        must(kvCFGKeyExists(store, name) == 1, "what is given can be found");
        kvCFGGetType(store, name);
        kvCFGHasSubKey(store, name);
    }
}

void change(KVTiXmlConfig* store) {
    std::uint32_t number = 7;
    kvCFGValueDword(store, "Fuzz", "D", &number, 1);
    kvCFGValueDword(store, "Fuzz", "D", &number, 1);
    char text[] = "&#x</S>";
    kvCFGValueString(store, "Fuzz", "S", text, &number, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder(), ignored)) {
        std::filesystem::remove_all(entry.path(), ignored);
    }
    compareDepths(std::string(reinterpret_cast<const char*>(data), size));
    const std::string path = folder() + "/a.xml";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    KVTiXmlConfig* store = kvCFGOpen(path.c_str(), 0);
    if (store == nullptr) return 0;
    walkAll(store);
    change(store);
    must(kvCFGClose(store, 1) == 0, "an open store can be closed");

    store = kvCFGOpen(path.c_str(), KVCFG_NO_BACKUPS);
    must(store != nullptr, "what was saved can be opened");
    std::uint32_t number = 0;
    // A "Fuzz" of the input's own may be a value, or hold a D that is shadowed or no number.
    const bool isOurs = kvCFGGetType(store, "Fuzz") == KVCFG_KEY && kvCFGGetType(store, "Fuzz\\D") == KVCFG_DWORD;
    must(!isOurs || kvCFGValueDword(store, "Fuzz", "D", &number, 0) == 0, "what was saved can be read");
    must(kvCFGKeyExists(store, "Fuzz") == 1, "what was made is there");
    kvCFGClose(store, 0);
    return 0;
}
