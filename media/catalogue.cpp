// The look-ups of the catalogue, and the kind of a code.
//
// A code may be both video and audio: whichever table is asked first answers, and that is the video table wherever both
// are asked.
#include <cstdint>

#include "fourcc.h"
#include "media/catalogue_codes.h"
#include "media/index.h"

using kv::media::kIndex;
using kv::media::kInformation;
using kv::media::videoFlags;

std::uint32_t fccGetInfoVideo(std::uint32_t fcc, std::uint32_t*, char*, char*) { return videoFlags(fcc); }

std::uint32_t fccGetInfoAudio(std::uint32_t fcc, std::uint32_t*, char*, char*) {
    return kIndex[fcc].audio ? fccFlagAudio : 0;
}

std::uint32_t fccGetInfoInfo(std::uint32_t fcc, std::uint32_t*, char*, char*) {
    return fcc == kInformation ? fccFlagAudio : 0;
}

std::uint32_t fccGetInfo(std::uint32_t fcc, std::uint32_t* pFlags, char* pName, char* pExt, std::uint32_t dwMask) {
    if ((dwMask & fccFlagVideo) != 0) {
        if (const std::uint32_t flags = fccGetInfoVideo(fcc, pFlags, pName, pExt); flags != 0) return flags;
    }
    if ((dwMask & fccFlagAudio) != 0) {
        if (const std::uint32_t flags = fccGetInfoAudio(fcc, pFlags, pName, pExt); flags != 0) return flags;
    }
    const bool isAsked = (dwMask & (fccFlagVideo | fccFlagAudio)) != 0;
    return isAsked && fcc == kInformation ? fccFlagVideo | fccFlagAudio : 0;
}

std::uint32_t fccIsSupported(std::uint32_t fcc) { return fccIsVideo(fcc) | fccIsAudio(fcc) | fccIsInfo(fcc); }

std::uint32_t fccIsVideo(std::uint32_t fcc) { return videoFlags(fcc) != 0; }

std::uint32_t fccIsAudio(std::uint32_t fcc) { return videoFlags(fcc) == 0 && kIndex[fcc].audio; }

std::uint32_t fccIsInfo(std::uint32_t fcc) { return fcc == kInformation; }
