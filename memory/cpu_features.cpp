// The feature word, and the routines that a build without the signal primitives selects by it.
//
// The word is a constant and says nothing about the processor. It is read where a copy is made, so every access is a
// relaxed atomic one.
#include <cstdint>

#include "border/relaxed.h"
#include "kvos/memory.h"

uint32_t CPUFeatureFlagsIntern = 0;
kvOSCopyRoutine pfcnCopyMemoryFast = nullptr;
kvOSSetRoutine pfcnSetMemoryFast = nullptr;
kvOSZeroRoutine pfcnZeroMemoryFast = nullptr;

void CPUSetupFeatureFlag() { kv::border::relaxedStore<std::uint32_t>(CPUFeatureFlagsIntern, 25207); }

uint32_t CPUFeatureFlags() {
    if (kv::border::relaxedLoad(CPUFeatureFlagsIntern) == 0) CPUSetupFeatureFlag();
    return kv::border::relaxedLoad(CPUFeatureFlagsIntern);
}
