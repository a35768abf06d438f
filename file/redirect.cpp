// The one redirect, which the calls by name apply to their path first.
//
// Both texts must be set for it to happen, and only the first match at the start of the path counts: the result is
// never matched again. The settings are asked for them once, by the first call that finds the default store open; no
// call opens it for that.
#include "file/redirect.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "border/setting.h"
#include "border/text.h"
#include "file/null_argument.h"
#include "kvcfg.h"
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

constexpr const char* kKey = "MediaKiln\\Advanced";

enum class Loading { notYet, underWay, done };
std::atomic<Loading> loading{Loading::notYet};

/// The text of a setting, from malloc; null for a missing or empty one.
char* textOf(KVTiXmlConfig* settings, const char* name) noexcept {
    return border::atBorder<char*>(nullptr, [&]() -> char* {
        const auto text = border::storedText(settings, kKey, name);
        return text && !text->empty() ? strdup(text->c_str()) : nullptr;
    });
}

/// Publishes a text with what it holds.
void store(char*& variable, char* text) noexcept { std::atomic_ref(variable).store(text, std::memory_order_release); }

/// A host's own texts are replaced and stay the host's. Meant: a replacement that was set before costs the source that
/// was just read, so that there is no redirect.
void loadTexts(KVTiXmlConfig* settings) noexcept {
    char* const source = textOf(settings, "ReDir_Source");
    if (source != nullptr) store(gszReDir_Source, source);
    char* const newDir = textOf(settings, "ReDir_NewDir");
    if (newDir == nullptr) return;
    if (border::relaxedLoad(gszReDir_NewDir) != nullptr) {
        store(gszReDir_Source, nullptr);
        std::free(source);
    }
    store(gszReDir_NewDir, newDir);
}

/// Meant: what is set in the store after the first call is not seen. Other threads do not wait for the one that reads:
/// it waits for the store, and they may hold what the store's user wants.
void loadOnce() noexcept {
    if (loading.load(std::memory_order_relaxed) == Loading::done) return;
    // One handle for all: KVSTDCONFIG would open a store anew that is closed meanwhile.
    KVTiXmlConfig* const settings = kvCFGDefaultIfOpen();
    if (settings == nullptr) return;
    Loading before = Loading::notYet;
    if (!loading.compare_exchange_strong(before, Loading::underWay)) return;
    loadTexts(settings);
    loading.store(Loading::done);
}

char* acquired(char*& variable) noexcept { return std::atomic_ref(variable).load(std::memory_order_acquire); }

Redirect currentRedirect() noexcept {
    loadOnce();
    return {acquired(gszReDir_Source), acquired(gszReDir_NewDir)};
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
