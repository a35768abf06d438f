// A text of the settings, read whole by whoever needs one.
#pragma once

#include <optional>
#include <string>

#include "kvcfg.h"
#include "kvos/sync.h"

namespace kv::border {

/// The text of a setting, empty for one without; nothing where the store or the setting is missing. Neither reports,
/// unless the store is the default one and is opened by this.
///
/// kvCFGValueString copies without a bound but the length that it told before, which must not change in between: so
/// the store's lock is held over both.
inline std::optional<std::string> storedText(KVTiXmlConfig* settings, const char* key, const char* name) {
    KVTiXmlConfig* const store = kvCFGCheckHandle(settings);
    if (store == nullptr) return std::nullopt;
    const CDAutoLock unchanged(&store->lock);
    std::uint32_t length = 0;
    if (kvCFGValueString(store, key, name, nullptr, &length, 0) == 0xFFFFFFFF) return std::nullopt;
    std::string text(length, '\0');
    if (kvCFGValueString(store, key, name, text.data(), &length, 0) != 0) return std::nullopt;
    return text;
}

}  // namespace kv::border
