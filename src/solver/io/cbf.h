/* cbf.h - the cones of the Conic Benchmark Format, for its reader and its writer. */
#pragma once

#include <cstdint>
#include <string_view>

/* F, L+, L-, L=, Q, QR: free, at least 0, at most 0, 0, quadratic, rotated quadratic. */
enum class cbf_cone : uint8_t { free, plus, minus, zero, quad, rquad };

/* Rows or columns that follow each other and are in one cone. */
struct cbf_block {
    cbf_cone cone;
    int32_t size;
};

struct cbf_cone_row {
    const char *word;
    int32_t least; /* members */
};

/* By cone. */
inline constexpr cbf_cone_row cbf_cone_table[] = {{"F", 0}, {"L+", 0}, {"L-", 0}, {"L=", 0}, {"Q", 1}, {"QR", 2}};
