// The way from an exported call into a store.
//
// Lock order, outermost first: the lock of saving (saving_lock.h); a store's own lock. Every report takes the list lock
// of the log, under which no setting is read or written. While a store's own lock is held nothing is reported and no
// call of the file layer is made, which reports and reads the redirect from the settings: what does either, the saving
// with its backups, holds the lock of saving alone. So neither of the two locks is ever waited for under the other.
#pragma once

#include <cstdint>
#include <string_view>

#include "border/guard.h"
#include "config/walk.h"
#include "kvcfg.h"

namespace kv::config {

inline constexpr std::uint32_t kFailed = 0xFFFFFFFF;

inline bool isOpened(const KVTiXmlConfig* store) { return store != nullptr && store->fOpened != 0; }

/// Runs `body(store)` with the store's lock held; `failure` for a store that can't be had, and for an exception.
template <class Result, class Body>
Result withStore(KVTiXmlConfig* handle, Result failure, Body&& body) noexcept {
    return border::atBorder(failure, [&]() -> Result {
        KVTiXmlConfig* store = kvCFGCheckHandle(handle);
        if (!isOpened(store)) return failure;
        const CDAutoLock locked(&store->lock);
        return body(*store);
    });
}

/// The same with what a path leads to: `body(store, element)`; `failure` if there is nothing.
template <class Result, class Body>
Result withElement(KVTiXmlConfig* handle, const char* path, Result failure, Body&& body) noexcept {
    return withStore(handle, failure, [&](KVTiXmlConfig& store) -> Result {
        TiXmlElement* element = GetKey(store.pRoot, path);
        return element == nullptr ? failure : body(store, *element);
    });
}

inline void markModified(KVTiXmlConfig& store) { store.fModified = 1; }

/// Puts a text in the place of the first child, if that is one, or into an element without children; a first child of
/// another kind stays, and the text is then not stored.
void replaceText(TiXmlElement& element, const char* text);

/// Whether a text can stand in a comment.
bool isComment(const char* text);

std::uint32_t addDword(KVTiXmlConfig& store, const char* key, const char* name, std::uint32_t value,
                       const char* comment);
std::uint32_t addString(KVTiXmlConfig& store, const char* key, const char* name, const char* text, std::uint32_t type,
                        const char* comment);

}  // namespace kv::config
