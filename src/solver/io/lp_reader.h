/* lp_reader.h - what the parts of the LP reader share: the state, expressions, columns and their bounds. */
#pragma once

#include "solver/io/lp_lexer.h"
#include "solver/io/lp_rows.h"
#include "solver/io/lp_words.h"
#include "solver/model/names.h"

/* Things that a reader takes and its user should know of. Each kind is told once, with its number and its first place. */
enum lp_note_kind : uint8_t {
    LP_NOTE_NEW_COLUMN,    /* first met in Bounds, General or Binary */
    LP_NOTE_WHOLE_SQUARE,  /* [ ... ] without / 2 in the objective */
    LP_NOTE_HALF_ROW,      /* [ ... ] / 2 in a constraint */
    LP_NOTE_BARE_PRODUCT,  /* x y for x * y */
    LP_NOTE_DEFAULT_LOWER, /* an upper bound below the lower bound 0 that was not given */
    LP_NOTE_NO_LOWER,      /* the same, with the lower bound taken as -infinity */
    LP_NOTE_BINARY_BOUNDS, /* bounds of a binary column that leave neither 0 nor 1 */
    LP_NOTE_COUNT
};

struct lp_note {
    int64_t num = 0;
    int64_t line = 0;
    std::string name;
};

enum : uint8_t { LP_GIVEN_LOWER = 1, LP_GIVEN_UPPER = 2 };

/* Linear terms whose columns are still to be looked up: many at a time, of several short rows if need be, so that the
 * waits for memory overlap. Their names are copies, for the block that they stood in may go. */
inline constexpr size_t lp_pending_max = 64;
inline constexpr size_t lp_pending_copy = 32; /* bytes that are copied at once, whatever a name's length */

struct lp_pending {
    size_t num = 0;
    size_t used = 0; /* of text */
    std::string_view name[lp_pending_max];
    double factor[lp_pending_max];
    int32_t col[lp_pending_max];
    int32_t row_ends[lp_pending_max + 1] = {}; /* how many rows end before term k */
    char text[lp_pending_max * (lp_max_name + 1) + lp_pending_copy];
};

struct lp_reader {
    lp_lexer lex;
    model *m = nullptr;
    double infinite = 1e16; /* parameter BOUND_INFINITE */
    name_index var_index, con_index;
    lp_rows rows;

    lp_pending pending;
    std::vector<uint8_t> given;  /* bounds in the text, LP_GIVEN_..., one a column */
    std::vector<quad_term> quad; /* of the expression being read */
    lp_note notes[LP_NOTE_COUNT];
};

inline bool lp_is_sense(lp_kind kind) { return kind == LP_LESS || kind == LP_GREATER || kind == LP_EQUAL; }

/* The sense read from the other side. */
inline lp_kind lp_mirrored(lp_kind sense)
{
    if (sense == LP_LESS) return LP_GREATER;
    return sense == LP_GREATER ? LP_LESS : LP_EQUAL;
}

/* One side of a row, or the objective. */
struct lp_side {
    double constant = 0.0;
    bool has_constant = false;
    bool is_infinite = false; /* nothing but an infinite number */
    bool has_terms = false;   /* linear or quadratic ones */
};

void lp_remember(lp_reader *r, lp_note_kind kind, int64_t line, std::string_view name);

/* Looks up the columns of the pending terms, all of the objective or all of rows, and adds the terms. */
[[nodiscard]] int32_t lp_add_pending(lp_reader *r, bool is_objective);

/* The column that the token names, made when it is new. No terms are pending. */
[[nodiscard]] int32_t lp_column_at(lp_reader *r, int32_t *col, bool *is_new);

/* An expression: linear terms go to the objective or to the open row, quadratic ones are appended to r->quad, with the
 * factors that stand in the text (see lp_quad_to_model). Ends before what cannot continue it. */
[[nodiscard]] int32_t lp_read_side(lp_reader *r, bool is_objective, lp_side *side);

/* Turns products with the factors of the text into entries of Q in x'Qx/2, sorted, repeated ones added up. */
void lp_quad_to_model(std::vector<quad_term> *terms);

/* A number with any signs before it, or an infinite one; sizes from BOUND_INFINITE on become infinite. */
[[nodiscard]] int32_t lp_read_number(lp_reader *r, double *value);

/* Sections; the token is behind the header, and at the next header or the end of the file afterwards. */
[[nodiscard]] int32_t lp_read_rows(lp_reader *r);
[[nodiscard]] int32_t lp_read_bounds(lp_reader *r);
[[nodiscard]] int32_t lp_read_integers(lp_reader *r, bool is_binary);

/* Whether the token begins a section, or the file ends with it. */
bool lp_at_section(lp_reader *r);
