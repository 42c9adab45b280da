/* sysatomic.cpp - counters that several threads step at once. */
#include "cpub/sysatomic.h"

/* As reports of this module show it, on every platform. */
static const char SOURCE[] = "src\\cpub\\sysatomic";

sysatomic *sysatomic_create(sysenv *sys, int32_t count)
{
    if (count < 0) return nullptr; /* as a size it would wrap */
    sysatomic *atomic = static_cast<sysatomic *>(sysenv_callocdbg(sys, SOURCE, __LINE__, 1, sizeof(sysatomic)));
    if (atomic == nullptr) return nullptr;
    atomic->sys = sys;
    const uint64_t num_allocated = static_cast<uint64_t>(count) + 1;
    atomic->raw = sysenv_mallocdbg(sys, SOURCE, __LINE__, num_allocated, sizeof atomic->counters[0]);
    if (atomic->raw == nullptr) {
        sysenv_freedbg(sys, SOURCE, __LINE__, nullptr);
        sysenv_freedbg(sys, SOURCE, __LINE__, atomic);
        return nullptr;
    }
    sysenv_assert(sys, SOURCE, __LINE__, reinterpret_cast<uintptr_t>(atomic->raw) % sizeof atomic->counters[0] == 0);
    atomic->count = count;
    atomic->counters = static_cast<int32_t *>(atomic->raw);
    for (int32_t i = 0; i < count; ++i) atomic->counters[i] = 0;
    return atomic;
}

void sysatomic_delete(sysatomic **atomic)
{
    if (atomic == nullptr || *atomic == nullptr) return;
    sysenv *sys = (*atomic)->sys;
    sysenv_freedbg(sys, SOURCE, __LINE__, (*atomic)->raw);
    sysenv_freedbg(sys, SOURCE, __LINE__, *atomic);
    *atomic = nullptr;
}

int32_t sysatomic_inc(sysatomic *atomic, int32_t index)
{
    return __atomic_add_fetch(&atomic->counters[index], 1, __ATOMIC_SEQ_CST);
}

int32_t sysatomic_dec(sysatomic *atomic, int32_t index)
{
    return __atomic_sub_fetch(&atomic->counters[index], 1, __ATOMIC_SEQ_CST);
}
