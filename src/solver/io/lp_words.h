/* lp_words.h - the reserved words of the LP format. */
#pragma once

#include "solver/io/lp_lexer.h"

enum lp_section : uint8_t {
    LP_SECTION_NONE,
    LP_SECTION_ROWS,
    LP_SECTION_BOUNDS,
    LP_SECTION_GENERAL,
    LP_SECTION_BINARY,
    LP_SECTION_END,
    LP_SECTION_REFUSED /* known, and not supported as soon as it holds anything */
};

struct lp_header {
    std::string_view word;   /* lower case */
    std::string_view second; /* what follows on the same line; empty: nothing */
    lp_section section;
    const char *title; /* for messages */
};

/* The header that begins with the token, a name; null if none does. A reserved word before a colon is the name of a
 * row. The token stays. */
const lp_header *lp_header_at(lp_lexer *lex);

/* Moves past a header to the token behind it. */
void lp_skip_header(lp_lexer *lex, const lp_header *header);

/* ZLR_SENSE_... if the text is a word that opens the objective, else -1. */
int32_t lp_sense_word(std::string_view text);

bool lp_is_free(std::string_view text);
bool lp_is_infinity(std::string_view text);

/* Whether some reader takes the text for a word of the format, so that it should not be written as a name. */
bool lp_is_reserved(std::string_view text);
