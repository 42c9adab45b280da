/* stub_expression.cpp - see stub_expression.h. */
#include "ampl/stub_expression.h"

// Last: its macros must not meet the standard headers.
#include "ampl/asl_include.h"

/* The library's classes of operators, as its table of them has it. */
enum {
    CLASS_UNARY = 1,
    CLASS_BINARY = 2,
    CLASS_LIST = 3,      /* minimum and maximum: a count of operands */
    CLASS_PIECEWISE = 4, /* a count of slopes, slopes and breakpoints, then a column */
    CLASS_IF = 5,
    CLASS_SUM = 6,
    CLASS_COUNT = 11
};
static constexpr int32_t num_operators = 83;

/* Operators that take texts: a choice between texts, and the count of a text. The two powers are forms that the library
 * makes while it reads; in a stub they would lack an operand. */
enum {
    OPERATOR_QUOTIENT = 55,
    OPERATOR_COUNT_TEXT = 61,
    OPERATOR_IF_TEXT = 65,
    OPERATOR_POWER_OF = 76,
    OPERATOR_POWER_TO = 78
};

/* A count of operands: at least `least`, and no more than there are bytes left. */
template <bool binary> static bool take_operands(stub_reader *r, int32_t least, int32_t *num)
{
    const int64_t left = std::min<int64_t>(stub_bytes_left(r), INT32_MAX);
    return stub_take_number<binary>(r, "a count of operands", least, static_cast<int32_t>(left), num);
}

/* A number behind its letter: real, of 4 bytes, or of 2, which the library takes in binary alone. False without a fault: it
 * is no number's letter. */
template <bool binary> static bool take_number(stub_reader *r, char letter, double *value)
{
    int32_t whole = 0;
    if (letter == 'n') return stub_take_value<binary>(r, "a number", value) && stub_end_line<binary>(r);
    if (letter == 'l') {
        if (!stub_take_int<binary>(r, "a number", &whole)) return false;
        *value = whole;
        return stub_end_line<binary>(r);
    }
    if (letter == 's' && binary && stub_need_bytes(r, 2, "a number")) {
        uint16_t bits = 0;
        std::memcpy(&bits, r->at, 2);
        if (r->is_swapped) bits = __builtin_bswap16(bits);
        *value = static_cast<int16_t>(bits);
        r->at += 2;
        return true;
    }
    --r->at;
    return false;
}

/* Slopes and breakpoints: numbers, each with its letter. */
template <bool binary> static bool take_pieces(stub_reader *r)
{
    const char *what = "a slope or breakpoint";
    int32_t num = 0;
    if (!stub_begin_line<binary>(r, what) || !take_operands<binary>(r, 2, &num) || !stub_end_line<binary>(r))
        return false;
    for (int64_t k = 0; k < 2 * static_cast<int64_t>(num) - 1; ++k) {
        char letter = 0;
        double unused = 0;
        if (!stub_take_letter<binary>(r, what, &letter)) return false;
        if (!take_number<binary>(r, letter, &unused)) return stub_expected(r, what);
    }
    return true;
}

/* A text: its length and its bytes, which may hold line ends. */
template <bool binary> static bool take_text(stub_reader *r)
{
    const int64_t left = std::min<int64_t>(stub_bytes_left(r), INT32_MAX);
    int32_t num = 0;
    if (!stub_take_number<binary>(r, "the length of a text", 1, static_cast<int32_t>(left), &num)) return false;
    if (!binary && *r->at++ != ':') {
        --r->at;
        return stub_expected(r, "':' before a text");
    }
    for (int32_t k = 0; k < num; ++k) {
        char c = 0;
        if (!stub_take_letter<binary>(r, "a text", &c)) return false;
        if (!binary && c == '\n') ++r->line;
    }
    return stub_begin_line<binary>(r, "the end of a text"); /* a text's own line ends may have emptied the block */
}

/* Whole quotient, precision, rounding, truncation: the library reads them, and follows a null pointer when it evaluates
 * them. Null: it is none of these. */
static const char *broken_operator(int32_t code)
{
    static const char *const names[] = {"div", "precision", "round", "trunc"};
    return code >= OPERATOR_QUOTIENT && code < OPERATOR_QUOTIENT + 4 ? names[code - OPERATOR_QUOTIENT] : nullptr;
}

/* With what it works on. */
template <bool binary> static bool take_operator(stub_reader *r, stub_operator *op)
{
    int32_t *num = &op->missing;
    op->has_term = false;
    if (!stub_take_number<binary>(r, "an operator", 0, num_operators - 1, &op->code)) return false;
    const int32_t code = op->code;
    if (const char *name = broken_operator(code); name != nullptr)
        return stub_fault(r, "operator %d (%s) cannot be evaluated", code, name);
    op->takes_text = code == OPERATOR_IF_TEXT || code == OPERATOR_COUNT_TEXT;
    switch (code == OPERATOR_POWER_OF || code == OPERATOR_POWER_TO ? 0 : optype[code]) {
    case CLASS_UNARY: *num = 1; return stub_end_line<binary>(r);
    case CLASS_BINARY: *num = 2; return stub_end_line<binary>(r);
    case CLASS_IF: *num = 3; return stub_end_line<binary>(r);
    case CLASS_PIECEWISE: *num = 1; return stub_end_line<binary>(r) && take_pieces<binary>(r);
    case CLASS_LIST:
    case CLASS_COUNT:
        return stub_end_line<binary>(r) && stub_begin_line<binary>(r, "a count of operands") &&
               take_operands<binary>(r, 1, num) && stub_end_line<binary>(r);
    case CLASS_SUM:
        return stub_end_line<binary>(r) && stub_begin_line<binary>(r, "a count of operands") &&
               take_operands<binary>(r, 3, num) && stub_end_line<binary>(r);
    default: return stub_fault(r, "operator %d is not one that can be taken", code);
    }
}

template <bool binary> static bool take_variable(stub_reader *r, const stub_expression_scope *scope, stub_term *term)
{
    int32_t j = 0;
    if (!stub_take_number<binary>(r, "a variable", 0, scope->num_variables - 1, &j)) return false;
    const int32_t common = j - scope->num_var;
    if (common >= 0 && !scope->has_common[common])
        return stub_fault(r, "the common expression %d is used before it is defined", j);
    term->degree = 1;
    term->column = j;
    if (common >= 0) { /* which columns it has is not kept */
        term->degree = scope->common_degree[common] > 1 ? scope->common_degree[common] : 0;
        term->column = INT32_MAX;
    }
    return stub_end_line<binary>(r);
}

template <bool binary> static bool take_call(stub_reader *r, const stub_expression_scope *scope, stub_operator *op)
{
    int32_t k = 0;
    op->code = -1;
    op->takes_text = true;
    op->has_term = false;
    if (!stub_take_number<binary>(r, "a function", 0, scope->num_func - 1, &k)) return false;
    if (!scope->has_func[k]) return stub_fault(r, "the function %d is used before it is named", k);
    return take_operands<binary>(r, 0, &op->missing) && stub_end_line<binary>(r);
}

/* One item, behind its letter: a term, or an operator, of which operands are missing then. */
template <bool binary>
static bool take_item(stub_reader *r, const stub_expression_scope *scope, char letter, bool text_allowed,
                      stub_operator *op, stub_term *term)
{
    op->missing = 0;
    *term = {.value = 0.0, .degree = 0, .column = -1, .is_number = false};
    switch (letter) {
    case 'v': return take_variable<binary>(r, scope, term);
    case 'o': return take_operator<binary>(r, op);
    case 'f': return take_call<binary>(r, scope, op);
    case 'h':
        if (text_allowed) return take_text<binary>(r) && stub_end_line<binary>(r);
        break;
    default:
        term->is_number = true;
        if (take_number<binary>(r, letter, &term->value)) return true;
        return stub_expected(r, "an expression");
    }
    --r->at;
    return stub_expected(r, "an expression");
}

/* A term is complete: with it maybe the operator that it belongs to, and so on. Returns how many are still open. */
static int32_t close_operators(stub_operator *operators, int32_t depth, stub_term *term)
{
    while (depth > 0) {
        stub_operator *op = &operators[depth - 1];
        op->term = op->has_term ? stub_degree_join(op->code, op->term, *term) : stub_degree_begin(op->code, *term);
        op->has_term = true;
        if (--op->missing > 0) break;
        *term = op->term;
        --depth;
    }
    return depth;
}

template <bool binary> bool stub_take_expression(stub_reader *r, const stub_expression_scope *scope, int32_t *degree)
{
    int32_t depth = 0;
    stub_term term = {};
    do {
        char letter = 0;
        stub_operator *next = &scope->operators[depth];
        const bool text_allowed = depth > 0 && next[-1].takes_text;
        if (!stub_take_letter<binary>(r, "an expression", &letter)) return false;
        if (!take_item<binary>(r, scope, letter, text_allowed, next, &term)) return false;
        if (next->missing == 0)
            depth = close_operators(scope->operators, depth, &term);
        else if (depth++ == stub_max_depth)
            return stub_fault(r, "the expression is more than %d operators deep", stub_max_depth);
    } while (depth > 0);
    *degree = term.degree;
    return true;
}

template bool stub_take_expression<false>(stub_reader *r, const stub_expression_scope *scope, int32_t *degree);
template bool stub_take_expression<true>(stub_reader *r, const stub_expression_scope *scope, int32_t *degree);
