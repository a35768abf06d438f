// The extensions that the files of one clip have, and the one that stands for it.
//
// A channel mark of a sound file (".a12") is found anywhere in the name, but what goes is the end of the name, as long
// as the mark: names are expected to end in theirs.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

#include "border/guard.h"
#include "border/secrets.h"
#include "border/text.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/media_names.h"
#include "kvos/naming.h"
#include "naming/append.h"
#include "naming/enumeration.h"
#include "naming/letters.h"
#include "naming/path_parts.h"
#include "naming/tokens.h"

namespace kv::naming {
namespace {

// ---- the parts of a sound file's name ----------------------------------------------------------------------------

constexpr std::array<std::string_view, 16> kChannelMarks{".a12", ".a34", ".a56", ".a78", ".a9a", ".abc", ".ade", ".afg",
                                                         ".a1",  ".a2",  ".a3",  ".a4",  ".a5",  ".a6",  ".a7",  ".a8"};

bool mayHaveMark(std::string_view ext) {
    constexpr std::array<std::string_view, 3> kSound{".wav", ".aif", ".aiff"};
    return std::ranges::any_of(kSound, [ext](std::string_view sound) { return equalAnyCase(ext, sound); });
}

std::string lowered(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), lowerCase);
    return lower;
}

/// How many characters at the end of a name belong to its channel mark; 0 for a file that has none.
std::size_t markLength(std::string_view name, std::string_view ext) {
    if (!mayHaveMark(ext)) return 0;
    const std::string lower = lowered(name);
    const auto* const mark = std::ranges::find_if(
        kChannelMarks, [&](std::string_view candidate) { return lower.find(candidate) != std::string::npos; });
    return mark == kChannelMarks.end() ? 0 : mark->size();
}

std::string_view withoutMark(std::string_view name, std::string_view ext) {
    return name.substr(0, name.size() - markLength(name, ext));
}

/// A path's parts, kept while the path is written anew.
struct OwnedParts {
    std::string drive, dir, name, ext;

    explicit OwnedParts(const PathParts& parts)
        : drive(parts.drive), dir(parts.dir), name(parts.name), ext(parts.ext) {}
    bool join(char* target, std::string_view newName, std::string_view newExt) const {
        return joinPath(target, {drive, dir, newName, newExt});
    }
};

// ---- which extensions there are ----------------------------------------------------------------------------------

/// A ".rtin" file's name ends in "A" where the sound is kept apart: the clip is the one without. Its path replaces that
/// of the file, whether or not it is there; the answer is the name that counts.
std::string nameOfClip(const OwnedParts& parts, char* path) {
    const std::string_view name = parts.name;
    if (!equalAnyCase(parts.ext, ".rtin") || !name.ends_with('A')) return std::string(withoutMark(name, parts.ext));
    const std::string_view shorter = name.substr(0, name.size() - 1);
    border::PathBuffer candidate;
    if (!parts.join(candidate, shorter, parts.ext)) return parts.name;
    const bool isThere = kvOSFileExists(candidate) != 0;
    replaceText(path, candidate);
    return std::string(isThere ? shorter : name);
}

/// Appends an entry's extension if its name is the clip's; false if it does not fit.
bool appendExtension(const char* entry, std::string_view clip, char* list) {
    const auto parts = splitPath(entry, DriveRule::keep);
    if (!parts) return false;
    const std::size_t length = markLength(parts->name, parts->ext);
    const std::string_view name = parts->name.substr(0, parts->name.size() - length);
    if (!equalAnyCase(name, clip)) return true;
    return appendPieces(list, {lowered(parts->name.substr(name.size())), parts->ext});
}

void findExtensions(char* path, char* list) {
    const auto split = splitPath(path, DriveRule::split);
    if (!split) return;
    const OwnedParts parts(*split);
    const std::string clip = nameOfClip(parts, path);

    border::PathBuffer pattern = "";
    if (!appendPieces(pattern, {parts.drive, parts.dir, slashBehind(parts.dir), "*"})) return;
    Enumeration found(pattern);
    if (!found.isOpen()) return;
    bool fits = true;
    do {
        if (!found.isFolder()) fits = appendExtension(found.name(), clip, list) && fits;
    } while (found.next());
    if (!fits) errno = ENAMETOOLONG;
}

// ---- which one stands for the clip -------------------------------------------------------------------------------

constexpr std::string_view kOnlyFailingOthers = "mp4";

constexpr std::array<std::string_view, 74> kVideo{
    "3gp",  "3g2", "263", "264",  "265",  "arc", "asf", "avi",  "avs", "bmp",  "braw", "cine", "crm", "dif",   "dhdr",
    "divx", "dng", "dps", "dpx",  "kv3d", "dv",  "dvs", "flv",  "gen", "gfx",  "exr",  "h264", "hdr", "hevc",  "ihss",
    "ismv", "j2c", "j2k", "jp2",  "js",   "krw", "ltv", "lxf",  "m2v", "m2ts", "mkv",  "mlv",  "mov", "movie", "mpd",
    "mp2",  "mp4", "mpg", "mpeg", "mts",  "mtv", "mxf", "ntv",  "omf", "omv",  "png",  "pgx",  "R3D", "raw",   "rm",
    "rgb",  "rtv", "tif", "tiff", "tga",  "ts",  "tvs", "vcap", "vcs", "webm", "wmv",  "xvid", "y4m", "yuv"};
static_assert(std::ranges::count(kVideo, kOnlyFailingOthers) == 1);
static_assert(std::ranges::none_of(kVideo, &std::string_view::empty));

/// What counts where no video extension does: the first of the list, and what it stands for.
struct Substitute {
    std::string_view first, chosen;
};
constexpr std::array<Substitute, 8> kSubstitutes{{{".rtin", ".rtin"},
                                                  {".aac", ".aaf"},  // meant
                                                  {".aif", ".aif"},
                                                  {".aiff", ".aiff"},
                                                  {".ogg", ".ogg"},
                                                  {".mp3", ".mp3"},
                                                  {".mpa", ".mpa"},
                                                  {".wav", ".wav"}}};

/// The video extension that the list's order gives, without its dot; empty if there is none. Cuts the list behind each
/// one that it looked at: what is left of it is the first.
std::string_view chooseVideo(char* list) {
    const std::string_view all = list;
    std::string_view rest = all, setAside;
    while (const auto token = nextToken(rest, '.')) {
        list[token->data() + token->size() - all.data()] = '\0';
        const auto* const known =
            std::ranges::find_if(kVideo, [&](std::string_view video) { return equalAnyCase(*token, video); });
        if (known == kVideo.end()) continue;
        if (*known != kOnlyFailingOthers) return *known;
        setAside = *known;
    }
    return setAside;
}

std::string_view chooseSubstitute(std::string_view first) {
    const auto* const known = std::ranges::find_if(
        kSubstitutes, [first](const Substitute& substitute) { return equalAnyCase(first, substitute.first); });
    return known == kSubstitutes.end() ? std::string_view{} : known->chosen;
}

/// Fills the list for the caller to see, on a copy of the path.
void showWhatIsThere(const char* path, char* list) {
    border::PathBuffer copy;
    if (replaceText(copy, path)) findExtensions(copy, list);
}

void chooseExtension(char* path, char* list) {
    const auto split = splitPath(path, DriveRule::split);
    if (!split) return;
    const OwnedParts parts(*split);
    std::string chosen(chooseVideo(list));
    if (!chosen.empty()) {
        chosen.insert(0, 1, '.');
    } else {
        chosen = chooseSubstitute(list);
        if (chosen == ".rtin") showWhatIsThere(path, list);
    }
    if (chosen.empty()) {
        ErrOut("\nCant find ext : %s (%s)", border::withoutSecrets(path).c_str(), list);
        if (list[0] == '\0') showWhatIsThere(path, list);
        return;
    }
    border::PathBuffer made;
    const bool hasIt = equalAnyCase(chosen, parts.ext);
    if (parts.join(made, withoutMark(parts.name, parts.ext), hasIt ? parts.ext : chosen)) replaceText(path, made);
}

}  // namespace
}  // namespace kv::naming

namespace naming = kv::naming;
namespace border = kv::border;

std::uint32_t FindFileExtensions(char* pPath, char* pExtList) {
    if (pPath == nullptr || pExtList == nullptr) return 1;
    return border::atBorder(1u, [&] {
        naming::findExtensions(pPath, pExtList);
        return 1u;
    });
}

std::uint32_t ChooseVideoExtension(char* pPath, char* pExtList) {
    if (pPath == nullptr || pExtList == nullptr) return 1;
    return border::atBorder(1u, [&] {
        naming::chooseExtension(pPath, pExtList);
        return 1u;
    });
}
