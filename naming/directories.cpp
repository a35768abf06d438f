// The directories of a path, made from the top down.
//
// The topmost one is usually there and often not to be touched ("/Volumes", a server's share), so it is made only when
// a directory in it can't be.
#include <cerrno>
#include <cstring>
#include <string_view>

#include "border/guard.h"
#include "border/secrets.h"
#include "border/text.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/locator.h"
#include "kvos/naming.h"
#include "naming/append.h"

namespace kv::naming {
namespace {

constexpr std::uint32_t kMode = 0775;

/// Takes the piece up to the next "/" off a text, passing over empty ones; empty at the end.
std::string_view nextPiece(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of('/'), text.size()));
    const std::string_view piece = text.substr(0, text.find('/'));
    text.remove_prefix(piece.size());
    return piece;
}

/// Where the walk begins, and what it has to go.
struct Walk {
    border::PathBuffer path = "";
    std::string_view rest;
};

/// "http://user@host/..." keeps what stands up to the "@"; the piece behind it, or else the first one, gets a "//".
bool beginOnNetwork(std::string_view directory, Walk& walk) {
    const std::size_t at = directory.find('@');
    const std::string_view kept = directory.substr(0, at == std::string_view::npos ? 0 : at + 1);
    walk.rest = directory.substr(kept.size());
    const std::string_view first = nextPiece(walk.rest);
    return appendPieces(walk.path, {kept, first, "//"});
}

bool beginLocally(const char* drive, std::string_view directory, Walk& walk) {
    walk.rest = directory;
    return appendPieces(walk.path, {drive, "/"});
}

bool isPresent(const char* path) { return kvOSFileExists(path) != 0; }

/// Makes a directory, with the help of the topmost one if need be. False, after a report, if neither could be made.
bool makeOne(const char* path, const char* topmost) {
    if (kvOSMakeDir(path, kMode) == 0) return true;
    const border::KeepErrno keep;
    if (kvOSMakeDir(topmost, kMode) != 0) {
        ErrOut("Unable to make directory: %s, errno = %d\n", border::withoutSecrets(path).c_str(), keep.value());
        return false;
    }
    kvOSMakeDir(path, kMode);
    return true;
}

bool makeAll(Walk& walk) {
    border::PathBuffer topmost;
    if (!appendPieces(walk.path, {nextPiece(walk.rest)})) return false;
    replaceText(topmost, walk.path);
    for (auto piece = nextPiece(walk.rest); !piece.empty(); piece = nextPiece(walk.rest)) {
        if (!appendPieces(walk.path, {"/", piece})) return false;
        if (!isPresent(walk.path) && !makeOne(walk.path, topmost)) return false;
    }
    return true;
}

bool makeStructure(const char* path) {
    border::PathBuffer full, drive, directory, name;
    char extension[256];
    if (kvOSFullPath(full, path, sizeof full) == nullptr) return false;
    const bool isOnNetwork = kvOSIsNetworkFile(full) != 0;
    if (isOnNetwork) kvOSFixHTTPSeparators(full);
    kvOSSplitPath(full, drive, directory, name, extension);
    if (name[0] != '\0' && extension[0] == '\0' && !appendPieces(directory, {"/", name})) return false;
    Walk walk;
    return (isOnNetwork ? beginOnNetwork(directory, walk) : beginLocally(drive, directory, walk)) && makeAll(walk);
}

}  // namespace
}  // namespace kv::naming

std::int32_t MakeDirStructure(const char* pPath) {
    if (pPath == nullptr) return -1;
    return kv::border::atBorder(-1, [&] { return kv::naming::makeStructure(pPath) ? 0 : -1; });
}
