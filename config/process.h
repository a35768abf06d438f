// What the process knows of its stores, beside the stores themselves.
//
// No lock guards it: two first uses of the default store at one moment may make it twice.
#pragma once

#include <atomic>
#include <cstdint>

#include "kvcfg.h"

namespace kv::config {

struct Process {
    std::atomic<KVTiXmlConfig*> defaultStore{nullptr};
    std::atomic<std::int32_t> defaultUsers{0};
    std::atomic<bool> madeAnew{false};  // a store was made, not read; until the default store is closed
    std::atomic<bool> savingDisabled{false};
};

extern constinit Process process;

}  // namespace kv::config
