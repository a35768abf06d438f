// Nobody waits here for the thread that reads: that one waits for the store, and whoever holds the store may report.
#include "diag/settings_once.h"

#include <atomic>
#include <cstdint>

#include "errlog.h"

namespace kv::diag {
namespace {

constinit std::atomic<int> sReaders{0};

/// Counts a reader from before gfReadReg tells of it, so that who sees the flag also sees the reader.
class Reading {
public:
    Reading() { sReaders.fetch_add(1); }
    ~Reading() { sReaders.fetch_sub(1); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    bool isFirst() const { return std::atomic_ref(gfReadReg).exchange(1) == 0; }
};

}  // namespace

void readSettingsOnce() {
    if (std::atomic_ref(gfReadReg).load(std::memory_order_acquire) != 0) return;
    const Reading reading;
    if (reading.isFirst()) _ReadRegSettings();
}

void readSettings() {
    const Reading reading;
    std::atomic_ref(gfReadReg).store(1);
    _ReadRegSettings();
}

bool settingsAreBeingRead() noexcept { return sReaders.load() != 0; }

}  // namespace kv::diag
