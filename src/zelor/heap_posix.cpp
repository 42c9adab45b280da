/* heap_posix.cpp - see heap.h. */
#include "heap.h"

#include <malloc.h>

/* The C library comes to the first two by itself once blocks of that size were released, and then holds back as much; the
 * third spares it many small steps on the way. Nothing is taken that is not used: these are addresses, not memory. */
void heap_prepare()
{
    constexpr int mebibyte = 1 << 20;
    (void)mallopt(M_MMAP_THRESHOLD, 32 * mebibyte);
    (void)mallopt(M_TRIM_THRESHOLD, 64 * mebibyte);
    (void)mallopt(M_TOP_PAD, 16 * mebibyte);
}
