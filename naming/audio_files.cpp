// The sound beside a video file: FindAudioForVideo.
//
// The table is the search: its order, what each find does to the mask, and when a row is passed over. Nothing else
// decides, so that a row counts one existence query or none.
#include <array>
#include <cstdint>
#include <string_view>

#include "border/guard.h"
#include "border/text.h"
#include "kvos/attributes.h"
#include "kvos/media_names.h"
#include "naming/append.h"
#include "naming/path_parts.h"

namespace kv::naming {
namespace {

enum class Effect {
    add,
    set,     // drops what was found before
    finish,  // the same, and ends the search
};

/// One convention: what stands between the clip's path without extension and the extension of the sound.
struct Convention {
    std::string_view suffix;
    Effect effect;
    std::uint32_t bits;
    std::uint32_t notWith = 0;     // passed over if the mask holds any of these
    std::string_view second = {};  // has to be there as well
};

using enum Effect;
constexpr std::uint32_t kPair = KVAUDIO_FIRST | KVAUDIO_SECOND;

constexpr std::array kBesideClip{
    Convention{"", finish, KVAUDIO_SINGLE},
    Convention{".a1", set, KVAUDIO_FIRST},
    Convention{".a2", add, KVAUDIO_SECOND},
    Convention{".A1", set, KVAUDIO_FIRST},
    Convention{".A2", add, KVAUDIO_SECOND},
    Convention{"a1", set, KVAUDIO_FIRST_BARE},
    Convention{"a2", add, KVAUDIO_SECOND_BARE},
    Convention{".aa", finish, KVAUDIO_BOTH, kPair},
    Convention{".AA", finish, KVAUDIO_BOTH, kPair},
    Convention{"_1", set, KVAUDIO_NUMBERED, 0, "_2"},
    Convention{".r", set, KVAUDIO_SIDES},
    Convention{".l", set, KVAUDIO_SIDES},
    Convention{".R", set, KVAUDIO_SIDES},
    Convention{".L", set, KVAUDIO_SIDES},
    Convention{".A1234", add, KVAUDIO_1234},
    Convention{".A12", add, KVAUDIO_12},
    Convention{".A34", add, KVAUDIO_34},
    Convention{".A56", add, KVAUDIO_56},
    Convention{".A78", add, KVAUDIO_78},
};

/// The names in the clip's directory that any clip of it can have. The first one moves the base, if nothing else did.
constexpr std::array kInFolder{
    Convention{"audio12", add, KVAUDIO_FOLDER_12},
    Convention{"audio34", add, KVAUDIO_FOLDER_34},
    Convention{"audio56", add, KVAUDIO_FOLDER_56},
    Convention{"audio78", add, KVAUDIO_FOLDER_78},
};

bool isPresent(const char* base, std::string_view suffix, std::string_view ext) {
    border::PathBuffer candidate = "";
    return appendPieces(candidate, {base, suffix, ext}) && kvOSFileExists(candidate) != 0;
}

/// Whether a convention holds for the mask so far. Its second file is not asked for without the first.
bool holds(const Convention& convention, std::uint32_t mask, const char* base, std::string_view ext) {
    return (mask & convention.notWith) == 0 && isPresent(base, convention.suffix, ext) &&
           (convention.second.empty() || isPresent(base, convention.second, ext));
}

std::uint32_t findAudio(const char* video, std::string_view ext, char* audioBase) {
    border::PathBuffer base, folder = "";
    auto parts = splitPath(video, DriveRule::split);
    if (parts && parts->name.ends_with('*')) parts->name.remove_suffix(1);
    const bool fits = parts && joinPath(base, {parts->drive, parts->dir, parts->name, {}}) &&
                      appendPieces(folder, {parts->drive, parts->dir, slashBehind(parts->dir)});
    // Not earlier: the base may go into the buffer that the video's path stands in.
    if (audioBase != nullptr) replaceText(audioBase, fits ? base : "");
    if (!fits) return 0;

    std::uint32_t mask = 0;
    for (const Convention& convention : kBesideClip) {
        if (!holds(convention, mask, base, ext)) continue;
        mask = convention.effect == add ? mask | convention.bits : convention.bits;
        if (convention.effect == finish) return mask;
    }
    for (const Convention& convention : kInFolder) {
        if (!holds(convention, mask, folder, ext)) continue;
        if (&convention == &kInFolder.front() && mask == 0 && audioBase != nullptr) replaceText(audioBase, folder);
        mask |= convention.bits;
    }
    return mask;
}

}  // namespace
}  // namespace kv::naming

std::uint32_t FindAudioForVideo(const char* pVideoPath, const char* pAudioExt, char* pAudioBase) {
    if (pVideoPath == nullptr || pAudioExt == nullptr) return 0;
    return kv::border::atBorder(0u, [&] { return kv::naming::findAudio(pVideoPath, pAudioExt, pAudioBase); });
}
