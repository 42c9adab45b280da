/* stub_stream.h - the stream that the AMPL Solver Library reads the segments of a stub from. */
#pragma once

#include "ampl/stub_matrix.h"

/* The file from the byte `begin` on, without the coefficients that are known, if any. Null where that cannot be; what is known
 * is read once more then, and comes to the same. It can be read front to back alone. */
[[nodiscard]] std::FILE *stub_stream_open(const char *path, int64_t begin, const stub_matrix *known);
