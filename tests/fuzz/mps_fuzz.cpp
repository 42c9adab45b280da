/* mps_fuzz.cpp - fuzz target of the MPS reader. */
#include "fuzz/reader_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    (void)fuzz_reader(mps_read, mps_write, data, size);
    return 0;
}
