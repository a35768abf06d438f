// The one redirect, which the calls by name apply to their path first.
//
// Both texts must be set for it to happen, and only the first match at the start of the path counts: the result is
// never matched again.
#include "file/redirect.h"

#include <string_view>

#include "border/relaxed.h"
#include "border/text.h"
#include "file/null_argument.h"
#include "kvos/locator.h"

char* gszReDir_Source = nullptr;
char* gszReDir_NewDir = nullptr;

namespace kv::file {
namespace {

struct Redirect {
    const char* source;
    const char* newDir;
    bool isSet() const { return source != nullptr && newDir != nullptr; }
};

/// The two texts as the host has set them.
Redirect currentRedirect() noexcept {
    return {border::relaxedLoad(gszReDir_Source), border::relaxedLoad(gszReDir_NewDir)};
}

}  // namespace

bool redirected(const char* path, border::PathBuffer& target) noexcept {
    target[0] = '\0';
    if (path == nullptr) return refuseNull(false);
    const std::string_view text = path;
    const Redirect redirect = currentRedirect();
    if (!redirect.isSet() || !border::beginsWithAnyCase(text, redirect.source)) return border::copyPath(target, text);
    const std::string_view rest = text.substr(std::string_view(redirect.source).size());
    if (border::copyPath(target, redirect.newDir) && border::appendPath(target, rest)) return true;
    target[0] = '\0';
    return false;
}

}  // namespace kv::file

void kvOSReDir(const char* pSource, char* pTarget) {
    if (pTarget == nullptr) return;
    kv::file::redirected(pSource, *reinterpret_cast<kv::border::PathBuffer*>(pTarget));
}
