// Interlocked operations on words and pointers.
//
// The compiler's own atomics, because std::atomic_ref takes no volatile object. They wrap on overflow without being
// undefined.
#include <cstdint>

#include "kvos/sync.h"

int32_t kvOSInterlockedIncrement(volatile int32_t* pnValue) { return __atomic_add_fetch(pnValue, 1, __ATOMIC_SEQ_CST); }

int32_t kvOSInterlockedDecrement(volatile int32_t* pnValue) { return __atomic_sub_fetch(pnValue, 1, __ATOMIC_SEQ_CST); }

int32_t kvOSInterlockedExchange(volatile int32_t* pnValue, int32_t nNew) {
    return __atomic_exchange_n(pnValue, nNew, __ATOMIC_SEQ_CST);
}

void* kvOSInterlockedExchangePointer(void* volatile* ppValue, void* pNew) {
    return __atomic_exchange_n(ppValue, pNew, __ATOMIC_SEQ_CST);
}

int32_t kvOSInterlockedCompareExchange(volatile int32_t* pnValue, int32_t nNew, int32_t nComparand) {
    // A failed exchange leaves the value found in nComparand, a successful one leaves it equal to that value.
    __atomic_compare_exchange_n(pnValue, &nComparand, nNew, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return nComparand;
}

void* kvOSInterlockedCompareExchangePointer(void* volatile* ppValue, void* pNew, void* pComparand) {
    __atomic_compare_exchange_n(ppValue, &pComparand, pNew, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return pComparand;
}
