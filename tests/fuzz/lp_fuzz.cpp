/* lp_fuzz.cpp - fuzz target of the LP reader. */
#include "fuzz/reader_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    (void)fuzz_reader(lp_read, lp_write, data, size);
    return 0;
}
