// The one redirect, which the calls by name apply to their path first.
//
// Both texts must be set for it to happen, and only the first match at the start of the path counts: the result is
// never matched again. The settings are asked for them by the first call that finds the default store open; no call
// opens it for that. No lock of this file is held while the store is asked, since its users may come here with locks of
// theirs: calls that meet here each read for themselves, and the first to have both texts makes them the process's.
#include "file/redirect.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

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

std::atomic<bool> isLoaded{false};
constinit std::mutex publishing;  // nothing is called while it is held

/// A thread that reads the settings and comes here again by that goes on with what there is.
constinit thread_local bool isReadingHere = false;

struct Free {
    void operator()(char* text) const noexcept { std::free(text); }
};
using OwnedText = std::unique_ptr<char, Free>;

/// The text of a setting; null for a missing or empty one.
OwnedText textOf(KVTiXmlConfig* settings, const char* name) noexcept {
    return border::atBorder(OwnedText(), [&] {
        const auto text = border::storedText(settings, kKey, name);
        return OwnedText(text && !text->empty() ? strdup(text->c_str()) : nullptr);
    });
}

/// Publishes a text with what it holds; it stays for the life of the process.
void store(char*& variable, OwnedText text) noexcept {
    std::atomic_ref(variable).store(text.release(), std::memory_order_release);
}

/// A host's own texts are replaced and stay the host's. Meant: a replacement that was set before costs the source that
/// was just read, so that there is no redirect.
void publish(OwnedText source, OwnedText newDir) noexcept {
    const std::lock_guard alone(publishing);
    if (isLoaded.load(std::memory_order_relaxed)) return;
    if (newDir != nullptr && border::relaxedLoad(gszReDir_NewDir) != nullptr) {
        store(gszReDir_Source, nullptr);
    } else if (source != nullptr) {
        store(gszReDir_Source, std::move(source));
    }
    if (newDir != nullptr) store(gszReDir_NewDir, std::move(newDir));
    isLoaded.store(true, std::memory_order_release);
}

/// Meant: what is set in the store after the first call is not seen.
void loadOnce() noexcept {
    if (isLoaded.load(std::memory_order_acquire) || isReadingHere) return;
    // One handle for all: KVSTDCONFIG would open a store anew that is closed meanwhile.
    KVTiXmlConfig* const settings = kvCFGDefaultIfOpen();
    if (settings == nullptr) return;
    isReadingHere = true;
    OwnedText source = textOf(settings, "ReDir_Source");
    OwnedText newDir = textOf(settings, "ReDir_NewDir");
    isReadingHere = false;
    publish(std::move(source), std::move(newDir));
}

char* acquired(char*& variable) noexcept { return std::atomic_ref(variable).load(std::memory_order_acquire); }

Redirect currentRedirect() noexcept {
    loadOnce();
    return {acquired(gszReDir_Source), acquired(gszReDir_NewDir)};
}

}  // namespace

bool redirected(const char* path, border::PathBuffer& target) noexcept {
    target[0] = '\0';
    const Redirect redirect = currentRedirect();
    if (path == nullptr) return refuseNull(false);
    const std::string_view text = path;
    if (!redirect.isSet() || !border::beginsWithAnyCase(text, redirect.source)) return border::copyPath(target, text);
    const std::string_view rest = text.substr(std::string_view(redirect.source).size());
    if (border::copyPath(target, redirect.newDir) && border::appendPath(target, rest)) return true;
    target[0] = '\0';
    return false;
}

}  // namespace kv::file

void kvOSReDir(const char* pSource, char* pTarget) {
    if (pTarget == nullptr) {
        kv::file::loadOnce();
        return;
    }
    kv::file::redirected(pSource, *reinterpret_cast<kv::border::PathBuffer*>(pTarget));
}
