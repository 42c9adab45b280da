/* words.cpp - see words.h. */
#include "solver/report/words.h"

#include <cctype>
#include <iterator>

struct word_row {
    int32_t number;
    const char *word;
};

static const word_row problem_status[] = {
    {ZLR_PRO_UNKNOWN, "UNKNOWN"},
    {ZLR_PRO_PRIM_AND_DUAL_FEAS, "PRIMAL_AND_DUAL_FEASIBLE"},
    {ZLR_PRO_PRIM_FEAS, "PRIMAL_FEASIBLE"},
    {ZLR_PRO_DUAL_FEAS, "DUAL_FEASIBLE"},
    {ZLR_PRO_PRIM_INFEAS, "PRIMAL_INFEASIBLE"},
    {ZLR_PRO_DUAL_INFEAS, "DUAL_INFEASIBLE"},
    {ZLR_PRO_PRIM_AND_DUAL_INFEAS, "PRIMAL_AND_DUAL_INFEASIBLE"},
    {ZLR_PRO_ILL_POSED, "ILL_POSED"},
    {ZLR_PRO_PRIM_INFEAS_OR_UNBND, "PRIMAL_INFEASIBLE_OR_UNBOUNDED"},
};

static const word_row solution_status[] = {
    {ZLR_SOLSTA_UNKNOWN, "UNKNOWN"},
    {ZLR_SOLSTA_OPTIMAL, "OPTIMAL"},
    {ZLR_SOLSTA_PRIM_FEAS, "PRIMAL_FEASIBLE"},
    {ZLR_SOLSTA_DUAL_FEAS, "DUAL_FEASIBLE"},
    {ZLR_SOLSTA_PRIM_AND_DUAL_FEAS, "PRIMAL_AND_DUAL_FEASIBLE"},
    {ZLR_SOLSTA_PRIM_INFEAS_CER, "PRIMAL_INFEASIBLE"},
    {ZLR_SOLSTA_DUAL_INFEAS_CER, "DUAL_INFEASIBLE"},
    {ZLR_SOLSTA_NEAR_OPTIMAL, "NEAR_OPTIMAL"},
    {ZLR_SOLSTA_NEAR_PRIM_FEAS, "NEAR_PRIMAL_FEASIBLE"},
    {ZLR_SOLSTA_NEAR_DUAL_FEAS, "NEAR_DUAL_FEASIBLE"},
    {ZLR_SOLSTA_NEAR_PRIM_INFEAS_CER, "NEAR_PRIMAL_INFEASIBLE"},
    {ZLR_SOLSTA_NEAR_DUAL_INFEAS_CER, "NEAR_DUAL_INFEASIBLE"},
    {ZLR_SOLSTA_INTEGER_OPTIMAL, "INTEGER_OPTIMAL"},
    {ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL, "NEAR_INTEGER_OPTIMAL"},
};

/* Of optima that are known to be such in their surroundings only. */
static const word_row local_status[] = {
    {ZLR_SOLSTA_OPTIMAL, "LOCALLY_OPTIMAL"},
    {ZLR_SOLSTA_NEAR_OPTIMAL, "NEAR_LOCALLY_OPTIMAL"},
};

static const word_row status_key[] = {
    {ZLR_SK_UNDEF, "UN"}, {ZLR_SK_BASIC, "BS"}, {ZLR_SK_SUPBAS, "SB"},   {ZLR_SK_LOWER, "LL"},
    {ZLR_SK_UPPER, "UL"}, {ZLR_SK_FIXED, "EQ"}, {ZLR_SK_INFINITE, "IN"},
};

static const word_row solution_kind[] = {
    {ZLR_SOL_ITR, "interior"},
    {ZLR_SOL_BAS, "basic"},
    {ZLR_SOL_ITG, "integer"},
};

static const word_row problem_type[] = {
    {ZLR_PROBTYPE_LO, "linear"},
    {ZLR_PROBTYPE_QO, "quadratic objective"},
    {ZLR_PROBTYPE_QCQO, "quadratic constraints"},
    {ZLR_PROBTYPE_CONIC, "conic"},
    {ZLR_PROBTYPE_NL, "nonlinear"},
};

static const word_row cone_type[] = {
    {ZLR_CT_QUAD, "QUAD"},
    {ZLR_CT_RQUAD, "RQUAD"},
};

template <size_t num> static const char *word_of(const word_row (&table)[num], int32_t number)
{
    for (const word_row &row : table)
        if (row.number == number) return row.word;
    return nullptr;
}

static bool same_word(std::string_view a, const char *b)
{
    for (char ca : a) {
        const char cb = *b++;
        if (cb == '\0' || std::toupper(static_cast<unsigned char>(ca)) != std::toupper(static_cast<unsigned char>(cb)))
            return false;
    }
    return *b == '\0';
}

template <size_t num> static int32_t number_of(const word_row (&table)[num], std::string_view word)
{
    for (const word_row &row : table)
        if (same_word(word, row.word)) return row.number;
    return -1;
}

const char *words_problem_status(int32_t prosta) { return word_of(problem_status, prosta); }
const char *words_solution_status(int32_t solsta, bool is_local)
{
    const char *local = is_local ? word_of(local_status, solsta) : nullptr;
    return local != nullptr ? local : word_of(solution_status, solsta);
}
int32_t words_find_problem_status(std::string_view word) { return number_of(problem_status, word); }
int32_t words_find_solution_status(std::string_view word, bool *is_local)
{
    const int32_t local = number_of(local_status, word);
    if (is_local != nullptr) *is_local = local >= 0;
    return local >= 0 ? local : number_of(solution_status, word);
}
const char *words_status_key(int32_t key) { return word_of(status_key, key); }
int32_t words_find_status_key(std::string_view word) { return number_of(status_key, word); }
const char *words_solution_kind(int32_t kind) { return word_of(solution_kind, kind); }
const char *words_problem_type(int32_t type) { return word_of(problem_type, type); }
const char *words_cone_type(int32_t type) { return word_of(cone_type, type); }
int32_t words_find_cone_type(std::string_view word) { return number_of(cone_type, word); }
