/* lp_lexer.h - words of an LP text, straight from the bytes of the source.
 *
 * The lexer holds one block of bytes and never a line: a text may be one line of any length. A token's text points into
 * the block and is good until the next call of the lexer. Tokens are bounded (lp_max_name bytes for a name), so that a
 * token that is cut by the end of a block is moved to its start and completed there.
 *
 * Errors are reported where they are met. After one the token is LP_BAD for good and `code` says what to return. */
#pragma once

#include "solver/io/io.h"
#include "solver/io/raw_buffer.h"

#include <cstdint>
#include <string_view>
#include <vector>

inline constexpr size_t lp_max_name = 255;

enum lp_kind : uint8_t {
    LP_END_OF_FILE,
    LP_BAD,
    LP_NAME,
    LP_NUMBER,
    LP_PLUS,
    LP_MINUS,
    LP_LESS,    /* < <= =< */
    LP_GREATER, /* > >= => */
    LP_EQUAL,
    LP_COLON,
    LP_OPEN,
    LP_CLOSE,
    LP_STAR,
    LP_CARET,
    LP_SLASH,
    LP_ARROW, /* -> of an indicator constraint: known so that it can be refused by name */
    LP_OTHER  /* any other printable character; the parser tells what it expected instead */
};

struct lp_lexer {
    const io_context *io = nullptr;
    byte_source *in = nullptr;

    raw_buffer block;
    const char *pos = nullptr; /* what comes next; *end is always 0 */
    const char *end = nullptr;
    bool at_end = false;      /* the source is used up */
    int64_t next_line = 1;    /* line of `pos` */
    bool passed_line = false; /* looking ahead has passed the end of a line */
    bool started = false;     /* the first word has been met */
    int32_t code = ZLR_RES_OK;

    lp_kind kind = LP_END_OF_FILE;
    bool first_on_line = true; /* nothing but blanks stands left of the token on its line */
    int64_t line = 1;          /* of the token */
    std::string_view text;
    double value = 0.0; /* of a number; always finite */

    char held[lp_max_name + 1]; /* text of a name whose block had to go while the parser looked ahead */
    std::string problem_name;   /* from the comment "\Problem name: ..." before the first word */
};

/* Starts on a source and reads the first token. */
void lp_lexer_start(lp_lexer *lex, const io_context *io, byte_source *in);

/* Reads the next token. */
void lp_next(lp_lexer *lex);

/* Whether ':' follows the name that is the token; the token stays. */
bool lp_colon_follows(lp_lexer *lex);

/* Whether `word` (lower case, at most 32 bytes) follows the token on its line, blanks between; no regard to case. */
bool lp_word_follows(lp_lexer *lex, std::string_view word);

/* Moves past a word that lp_word_follows has found. */
void lp_skip_word(lp_lexer *lex, std::string_view word);

/* What the token is, for messages: "'text'" or "the end of the file". */
std::string lp_found(const lp_lexer *lex);

/* Reports "found X where `expected` was expected" at the token, unless the lexer has reported already. Returns the code
 * to hand up. */
int32_t lp_expected(lp_lexer *lex, const char *expected);

/* Whether all characters of a name, and its length, are taken by all common readers. What we read is a wider set. */
bool lp_name_writable(std::string_view name);
