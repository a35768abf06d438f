// Paths, names and values of any kind on a loaded tree.
//
// What must hold: no path overruns anything, what a call made can be found by the same path, and the tree can be saved
// and read again whatever was asked for. Lines: calls of "path, name, text".
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "fuzz/input.h"
#include "kvcfg.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::must;

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr const char* kTree =
    "<KorvaneConfig><ZMW Type=\"0\"><A Type=\"0\"><D Value=\"-1\" Type=\"2\" /><S Type=\"1\">text</S></A>"
    "<B Type=\"3\">0AFF</B><A Type=\"1\">shadow</A></ZMW><K Type=\"0\" /></KorvaneConfig>";

std::string makeFile() {
    std::string folder = (std::filesystem::temp_directory_path() / "fuzz-walk-XXXXXX").string();
    must(mkdtemp(folder.data()) != nullptr, "there is a scratch folder");
    return folder + "/a.xml";
}

void change(KVTiXmlConfig* store, Input& input) {
    const auto which = input.number();
    const std::string path = input.text();
    const std::string name = input.text();
    const std::string text = input.text();
    ExactBuffer key{std::string_view(path)};
    ExactBuffer child{std::string_view(name)};
    ExactBuffer value{std::string_view(text)};
    auto length = static_cast<std::uint32_t>(text.size());
    auto number = static_cast<std::uint32_t>(which);
    char next[64];
    switch (which % 12) {
        case 0:
            if (kvCFGValueDword(store, key, child, &number, 1) == 0) {
                must(kvCFGValueDword(store, key, child, nullptr, 0) == 0, "a number that was written is there");
            }
            break;
        case 1:
            kvCFGValueString(store, key, child, value, &length, 1);
            break;
        case 2:
            kvCFGValueBinary(store, key, child, value, &length, 1);
            break;
        case 3:
            kvCFGValueComment(store, key, value, 1);
            break;
        case 4:
            if (kvCFGAddKeyString(store, key, child, value, number % 5, nullptr) == 0) {
                must(kvCFGGetType(store, (path + "\\" + name).c_str()) == number % 5, "what was added is there");
            }
            break;
        case 5:
            kvCFGAddKeyDword(store, key, child, number, value);
            break;
        case 6:
            kvCFGDeleteValue(store, key, child);
            break;
        case 7:
            if (kvCFGRenameKey(store, key, child, value) != kFailed) {
                must(kvCFGKeyExists(store, (path + "\\" + text).c_str()) == 1, "a new name can be found");
            }
            break;
        case 8:
            kvCFGCopyBranch(store, key, value);
            break;
        case 9:
            kvCFGGetNext(store, key, next, child, &number);
            break;
        case 10:
            kvCFGEnumKey(store, key, nullptr, nullptr, 1);
            break;
        default:
            kvCFGHasSubKey(store, key);
            kvCFGValueDword(store, key, child, &number, 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = makeFile();
    std::ofstream(path, std::ios::binary | std::ios::trunc) << kTree;
    KVTiXmlConfig* store = kvCFGOpen(path.c_str(), KVCFG_NO_BACKUPS);
    must(store != nullptr, "the tree can be opened");
    Input input(data, size);
    for (int calls = 0; calls < 100 && !input.isAtEnd(); ++calls) change(store, input);
    kvCFGAddKeyString(store, "Mark", nullptr, nullptr, KVCFG_KEY, nullptr);
    std::uint32_t number = 1;
    kvCFGValueDword(store, "Mark", "M", &number, 1);
    kvCFGClose(store, 1);

    store = kvCFGOpen(path.c_str(), KVCFG_NO_BACKUPS);
    must(store != nullptr && kvCFGKeyExists(store, "Mark") == 1, "whatever was asked for, the tree can be read again");
    kvCFGClose(store, 0);
    return 0;
}
