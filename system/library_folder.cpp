// The folder of this library: as the loader tells it, else by a search for one that is installed beside it.
#include <array>
#include <cerrno>
#include <cstdint>

#include "border/text.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/process.h"
#include "platform/library.h"

namespace kv::system {
namespace {

constexpr const char* kNeighbour = "libmediafile.dylib";

/// In the order in which they are tried. Meant: "~" is not the user's own folder, but a name in the working directory.
constexpr std::array kFolders{"clipProof.app/Contents/Frameworks/KorvaneKit.framework/Versions/6/",
                              "../Frameworks/KorvaneKit.framework/Versions/6/",
                              "~/Library/Frameworks/KorvaneKit.framework/Versions/6/"};
/// Taken without a look when the others do not have it.
constexpr const char* kLastFolder = "/Library/Frameworks/KorvaneKit.framework/Versions/6/";

const char* folderOfNeighbour() {
    for (const char* folder : kFolders) {
        border::PathBuffer path;
        border::formatText(path, sizeof path, "%s%s", folder, kNeighbour);
        if (kvOSFileExists(path) != 0) return folder;
    }
    return kLastFolder;
}

}  // namespace
}  // namespace kv::system

std::uint32_t kvOSGetDynaLibDir(char* pFolder) {
    using namespace kv::system;
    if (pFolder == nullptr) {
        errno = EINVAL;
        return 0xFFFFFFFF;
    }
    if (kv::platform::ownLibraryFolder(pFolder, kv::border::kPathSize)) return 0;
    const char* const folder = folderOfNeighbour();
    kv::border::copyPath(pFolder, folder);
    ErrOut("Found %s%s", folder, kNeighbour);
    return 0;
}
