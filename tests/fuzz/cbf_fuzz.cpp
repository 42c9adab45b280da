/* cbf_fuzz.cpp - fuzz target of the CBF reader. */
#include "fuzz/reader_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    (void)fuzz_reader(cbf_read, cbf_write, data, size);
    return 0;
}
