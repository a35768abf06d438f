// The one redirect that every call of the file layer applies to its path first.
//
// Both texts must be set for it to happen, and only the first match at the start of the path counts: the result is
// never matched again.
#include "file/redirect.h"

#include <cerrno>
#include <string_view>

#include "border/relaxed.h"
#include "kvos/locator.h"

extern "C" {

char* gszReDir_Source = nullptr;
char* gszReDir_NewDir = nullptr;

}  // extern "C"

namespace kv::file {
namespace {

struct Redirect {
    const char* source;
    const char* newDir;
    bool isSet() const { return source != nullptr && newDir != nullptr; }
};

/// The two texts as they are now. What fills them from a configuration does it here, ahead of the reading; as long as
/// no configuration is open they are what the host has set.
Redirect currentRedirect() noexcept {
    return {border::relaxedLoad(gszReDir_Source), border::relaxedLoad(gszReDir_NewDir)};
}

}  // namespace

bool redirected(const char* path, border::PathBuffer& target) noexcept {
    target[0] = '\0';
    if (path == nullptr) {
        errno = EINVAL;
        return false;
    }
    const std::string_view text = path;
    const Redirect redirect = currentRedirect();
    bool fits;
    if (redirect.isSet() && border::beginsWithAnyCase(text, redirect.source)) {
        const std::string_view rest = text.substr(std::string_view(redirect.source).size());
        fits =
            border::copyText(target, sizeof target, redirect.newDir) && border::appendText(target, sizeof target, rest);
    } else {
        fits = border::copyText(target, sizeof target, text);
    }
    if (!fits) {
        target[0] = '\0';
        errno = ENAMETOOLONG;
    }
    return fits;
}

}  // namespace kv::file

extern "C" void kvOSReDir(const char* pSource, char* pTarget) {
    if (pTarget == nullptr) return;
    kv::file::redirected(pSource, *reinterpret_cast<kv::border::PathBuffer*>(pTarget));
}
