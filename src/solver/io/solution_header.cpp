/* solution_header.cpp - see solution_reader.h: the keywords before the sections. */
#include "solver/io/solution_reader.h"

#include "solver/io/number.h"
#include "solver/report/words.h"

#include <cmath>
#include <iterator>

static int32_t header_problem(solution_reader *, std::string_view) { return ZLR_RES_OK; } /* told to people alone */

static int32_t header_kind(solution_reader *r, std::string_view value)
{
    for (int32_t kind = ZLR_SOL_ITR; kind <= ZLR_SOL_ITG; kind++) {
        if (value != words_solution_kind(kind)) continue;
        if (kind == r->kind) return ZLR_RES_OK;
        return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH, "the file holds the %s solution, asked for is the %s one",
                             words_solution_kind(kind), words_solution_kind(r->kind));
    }
    return solution_found_expected(r, value, "interior, basic or integer");
}

static int32_t header_size(solution_reader *r, std::string_view value, const listed_items *items)
{
    double num = -1.0;
    if (!number_parse(value, &num) || num < 0.0 || num != std::floor(num))
        return solution_found_expected(r, value, "a number of rows, columns or cones");
    if (num == items->num) return ZLR_RES_OK;
    return solution_fail(r, ZLR_RES_ERR_SOL_MISMATCH, "the file has %.0f %ss, the problem has %d", num, items->what,
                         items->num);
}

static int32_t header_rows(solution_reader *r, std::string_view value)
{
    return header_size(r, value, &r->items[ITEM_ROW]);
}

static int32_t header_columns(solution_reader *r, std::string_view value)
{
    return header_size(r, value, &r->items[ITEM_COLUMN]);
}

static int32_t header_cones(solution_reader *r, std::string_view value)
{
    return header_size(r, value, &r->items[ITEM_CONE]);
}

static int32_t header_prosta(solution_reader *r, std::string_view value)
{
    r->sol.prosta = words_find_problem_status(value);
    return r->sol.prosta >= 0 ? ZLR_RES_OK
                              : solution_found_expected(r, value, "a problem status such as PRIMAL_FEASIBLE");
}

static int32_t header_solsta(solution_reader *r, std::string_view value)
{
    r->sol.solsta = words_find_solution_status(value, &r->sol.is_local);
    return r->sol.solsta >= 0 ? ZLR_RES_OK : solution_found_expected(r, value, "a solution status such as OPTIMAL");
}

static int32_t header_objective(solution_reader *r, std::string_view value, double *objective)
{
    if (value == "none") *objective = std::numeric_limits<double>::quiet_NaN();
    return value == "none" || number_parse(value, objective) ? ZLR_RES_OK
                                                             : solution_found_expected(r, value, "a number or none");
}

static int32_t header_primal(solution_reader *r, std::string_view value)
{
    r->primal_obj_given = true;
    return header_objective(r, value, &r->sol.primal_obj);
}

static int32_t header_dual(solution_reader *r, std::string_view value)
{
    return header_objective(r, value, &r->sol.dual_obj);
}

static int32_t header_holds(solution_reader *r, std::string_view value)
{
    r->holds_given = true;
    if (value == "keys") r->sol.has_keys = true;
    if (value == "primal") r->sol.has_primal = true;
    if (value == "dual") r->sol.has_dual = true;
    const bool known = value == "keys" || value == "primal" || value == "dual" || value == "nothing";
    return known ? ZLR_RES_OK : solution_found_expected(r, value, "keys, primal, dual or nothing");
}

static const struct {
    const char *word;
    int32_t (*take)(solution_reader *r, std::string_view value);
    bool takes_list;
} header_keywords[] = {
    {"problem", header_problem, false},
    {"kind", header_kind, false},
    {"rows", header_rows, false},
    {"columns", header_columns, false},
    {"cones", header_cones, false},
    {"problem_status", header_prosta, false},
    {"solution_status", header_solsta, false},
    {"primal_objective", header_primal, false},
    {"dual_objective", header_dual, false},
    {"holds", header_holds, true},
};

/* The values behind keyword number k: one, or a list. */
static int32_t header_values(solution_reader *r, size_t k, std::string_view rest)
{
    int32_t num = 0;
    for (solution_skip_blanks(&rest); !rest.empty(); solution_skip_blanks(&rest)) {
        std::string_view value;
        if (!solution_take_token(r, &rest, &value))
            return solution_found_expected(r, rest, "a text with closed quotes");
        if (num > 0 && !header_keywords[k].takes_list) return solution_found_expected(r, value, "the end of the line");
        const int32_t res = header_keywords[k].take(r, value);
        if (res != ZLR_RES_OK) return res;
        num++;
    }
    if (num > 0) return ZLR_RES_OK;
    return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line, expected a value of %s",
                         header_keywords[k].word);
}

int32_t solution_header_line(solution_reader *r, std::string_view line)
{
    std::string_view word;
    if (!solution_take_token(r, &line, &word)) return solution_found_expected(r, line, "a keyword or a section");
    for (size_t k = 0; k < std::size(header_keywords); k++) {
        if (word != header_keywords[k].word) continue;
        if ((r->keywords_seen >> k & 1u) != 0)
            return solution_fail(r, ZLR_RES_ERR_FILE_FORMAT, "keyword %s occurs twice", header_keywords[k].word);
        r->keywords_seen |= 1u << k;
        return header_values(r, k, line);
    }
    return solution_found_expected(r, word, "a keyword of the header, [rows], [columns] or [cones]");
}
