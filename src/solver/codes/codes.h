/* codes.h - the one table of return codes. Numbers are never reused. */
#pragma once

#include "zelor.h"

#include <string>

struct code_row {
    int32_t code;
    const char *symbol;     /* "ZLR_RES_..." */
    const char *text;       /* one sentence, no full stop */
    int32_t response_class; /* ZLR_CLASS_... */
};

/* The row of a code; null for an unknown one. */
const code_row *code_find(int32_t code);

/* The whole table, ascending by code. */
const code_row *code_table(int32_t *num);

/* The class of any code, known or not: by its range where the table has no row. */
int32_t code_class(int32_t code);

/* docs/codes.md. */
std::string code_reference_page(void);
