/* mps_fuzz.cpp - target of a coverage-guided fuzzer for the MPS reader; the seeds run as tests in tests/unit/io. */
#include "fuzz/mps_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    (void)fuzz_mps(reinterpret_cast<const char *>(data), size);
    return 0;
}
