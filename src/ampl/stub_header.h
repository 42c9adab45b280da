/* stub_header.h - the ten lines that a stub begins with. */
#pragma once

#include "ampl/stub_reader.h"

struct stub_header {
    int32_t num_var, num_con, num_obj, num_lcon;
    int32_t num_curved_con, num_curved_obj; /* rows and objectives that are not linear, which come first */
    bool has_conditions;                    /* of complementarity */
    int32_t num_func;                       /* user functions */
    int64_t num_coefs, num_gradients;       /* coefficients of rows and of objectives */
    int32_t num_common;                     /* common expressions of more than one function */
    int32_t num_common_all;                 /* and of one function alone */
};

/* Reads and checks the header; the reader stands at the first segment then, in the right form. */
[[nodiscard]] bool stub_take_header(stub_reader *r, stub_header *header);
