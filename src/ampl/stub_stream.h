/* stub_stream.h - the stream that the AMPL Solver Library reads the segments of a stub from. */
#pragma once

#include "ampl/stub_matrix.h"

/* The file from the byte `begin` on, without the coefficients that are known, where they are a good part of it: what is read
 * once more comes to the same. Null where that cannot be. It can be read front to back alone. */
[[nodiscard]] std::FILE *stub_stream_open(const char *path, int64_t begin, const stub_matrix *known);
