/* codes.cpp - the table of return codes, and the reference page made from it.
 *
 * The compiler checks what other parts rely on: numbers ascend (lookup is a binary search), a code's class is the one
 * of its range, and no code but 0 can look like success to a caller that sees only its low eight bits. */
#include "solver/codes/codes.h"

#include <algorithm>
#include <iterator>

#define ROW(code, response_class, text)                                                                                \
    {                                                                                                                  \
        code, #code, text, response_class                                                                              \
    }

// clang-format off
static constexpr code_row codes[] = {
    ROW(ZLR_RES_OK,                   ZLR_CLASS_OK, "No error"),

    ROW(ZLR_RES_ERR_LICENSE,          ZLR_CLASS_ERROR, "The licence does not allow the call"),
    ROW(ZLR_RES_ERR_SPACE,            ZLR_CLASS_ERROR, "Out of memory"),
    ROW(ZLR_RES_ERR_FILE_OPEN,        ZLR_CLASS_ERROR, "A file cannot be opened for writing"),
    ROW(ZLR_RES_ERR_FILE_READ,        ZLR_CLASS_ERROR, "A file cannot be opened or read"),
    ROW(ZLR_RES_ERR_FILE_WRITE,       ZLR_CLASS_ERROR, "A file cannot be written completely"),
    ROW(ZLR_RES_ERR_NULL_HANDLE,      ZLR_CLASS_ERROR, "The environment or task is null"),
    ROW(ZLR_RES_ERR_NULL_POINTER,     ZLR_CLASS_ERROR, "An argument that must be given is null"),
    ROW(ZLR_RES_ERR_FILE_FORMAT,      ZLR_CLASS_ERROR, "A file does not follow its format"),
    ROW(ZLR_RES_ERR_FILE_UNSUPPORTED, ZLR_CLASS_ERROR, "A file holds a construct that is not supported"),
    ROW(ZLR_RES_ERR_WRITE_FORMAT,     ZLR_CLASS_ERROR, "The file format asked for cannot hold the problem"),
    ROW(ZLR_RES_ERR_PARAM_NAME,       ZLR_CLASS_ERROR, "There is no parameter of that name or number"),
    ROW(ZLR_RES_ERR_PARAM_VALUE,      ZLR_CLASS_ERROR, "The value is not allowed for the parameter"),
    ROW(ZLR_RES_ERR_ARGUMENT,         ZLR_CLASS_ERROR, "An argument has a value that is not known"),
    ROW(ZLR_RES_ERR_INDEX,            ZLR_CLASS_ERROR, "An index is out of range"),
    ROW(ZLR_RES_ERR_NAN,              ZLR_CLASS_ERROR, "A value is not a number"),
    ROW(ZLR_RES_ERR_BOUNDS,           ZLR_CLASS_ERROR, "The bounds are not what their bound key says"),
    ROW(ZLR_RES_ERR_NO_SOLUTION,      ZLR_CLASS_ERROR, "A solution of that kind is not defined"),
    ROW(ZLR_RES_ERR_SOL_MISMATCH,     ZLR_CLASS_ERROR, "A solution file does not fit the problem"),
    ROW(ZLR_RES_ERR_NO_REPAIR,        ZLR_CLASS_ERROR, "What a repair may not change contradicts itself"),
    ROW(ZLR_RES_ERR_QCON_EQUALITY,    ZLR_CLASS_ERROR, "A quadratic or nonlinear row is an equality"),
    ROW(ZLR_RES_ERR_QCON_RANGE,       ZLR_CLASS_ERROR, "A quadratic or nonlinear row has two different bounds"),
    ROW(ZLR_RES_ERR_NONCONVEX,        ZLR_CLASS_ERROR, "A quadratic objective or row is not convex"),
    ROW(ZLR_RES_ERR_CONE,             ZLR_CLASS_ERROR, "A cone is not valid"),
    ROW(ZLR_RES_ERR_NL_EVALUATION,    ZLR_CLASS_ERROR, "A nonlinear function cannot be evaluated"),
    ROW(ZLR_RES_ERR_NO_ENGINE,        ZLR_CLASS_ERROR, "No installed engine takes this type of problem"),
    ROW(ZLR_RES_ERR_ENGINE,           ZLR_CLASS_ERROR, "Every engine that was tried has failed"),
    ROW(ZLR_RES_ERR_NOT_AVAILABLE,    ZLR_CLASS_ERROR, "The function is not available in this version"),
    ROW(ZLR_RES_ERR_INTERNAL,         ZLR_CLASS_ERROR, "Internal error"),
    ROW(ZLR_RES_ERR_AMPL_STUB,        ZLR_CLASS_ERROR, "The AMPL stub or one of its options is not valid"),

    ROW(ZLR_RES_TRM_USER_STOP,        ZLR_CLASS_TERMINATION, "Stopped at the user's request"),
    ROW(ZLR_RES_TRM_TIME_LIMIT,       ZLR_CLASS_TERMINATION, "Stopped at the time limit"),
    ROW(ZLR_RES_TRM_MAX_ITERATIONS,   ZLR_CLASS_TERMINATION, "Stopped at the limit of iterations"),
    ROW(ZLR_RES_TRM_MAX_NODES,        ZLR_CLASS_TERMINATION, "Stopped at the limit of nodes"),
    ROW(ZLR_RES_TRM_MAX_SOLUTIONS,    ZLR_CLASS_TERMINATION, "Stopped at the limit of solutions"),
    ROW(ZLR_RES_TRM_OBJECTIVE,        ZLR_CLASS_TERMINATION, "Stopped at an objective limit"),
    ROW(ZLR_RES_TRM_MEMORY,           ZLR_CLASS_TERMINATION, "Stopped at the limit of memory"),
    ROW(ZLR_RES_TRM_STALL,            ZLR_CLASS_TERMINATION, "No engine came to an answer that passes the check"),
    ROW(ZLR_RES_TRM_LOCAL_INFEASIBLE, ZLR_CLASS_TERMINATION, "No feasible point was found; where it ended, the violation is least nearby"),
    ROW(ZLR_RES_TRM_DIVERGING,        ZLR_CLASS_TERMINATION, "The columns grow without end; the problem may be unbounded"),
};
// clang-format on

static constexpr int32_t class_of_range(int32_t code)
{
    if (code == 0) return ZLR_CLASS_OK;
    if (code >= 1 && code <= 999) return ZLR_CLASS_WARNING;
    return code >= 10000 ? ZLR_CLASS_TERMINATION : ZLR_CLASS_ERROR;
}

static constexpr bool codes_ascend(void)
{
    for (size_t i = 1; i < std::size(codes); i++)
        if (codes[i - 1].code >= codes[i].code) return false;
    return true;
}

static constexpr bool classes_fit(void)
{
    for (const code_row &row : codes)
        if (row.response_class != class_of_range(row.code)) return false;
    return true;
}

/* POSIX hands the low eight bits of an exit status to the caller. The AMPL front end reports code + 501, whose low
 * eight bits are 0 where those of the code are 11. */
static constexpr bool never_looks_like_success(void)
{
    for (const code_row &row : codes)
        if (row.code != 0 && (row.code % 256 == 0 || (row.code + 501) % 256 == 0)) return false;
    return true;
}

static_assert(codes_ascend(), "codes must ascend and occur once");
static_assert(classes_fit(), "a code's class must be that of its range");
static_assert(never_looks_like_success(), "a code must not leave 0 or 11 when divided by 256");

const code_row *code_find(int32_t code)
{
    const code_row *row = std::lower_bound(std::begin(codes), std::end(codes), code,
                                           [](const code_row &r, int32_t wanted) { return r.code < wanted; });
    return row != std::end(codes) && row->code == code ? row : nullptr;
}

const code_row *code_table(int32_t *num)
{
    *num = static_cast<int32_t>(std::size(codes));
    return codes;
}

int32_t code_class(int32_t code)
{
    const code_row *row = code_find(code);
    return row != nullptr ? row->response_class : class_of_range(code);
}

std::string code_reference_page(void)
{
    static const char *const class_name[] = {"success", "warning", "termination", "error"};

    std::string page =
        "# Return codes\n\n"
        "Made from the table in `src/solver/codes/codes.cpp` by the build target `docs`; do not edit.\n\n"
        "Ranges: 1 to 999 are warnings, 1000 to 9999 errors, 10000 and above terminations: the optimiser "
        "stopped before it was done, and the best point found is kept. An infeasible or unbounded problem "
        "is an answer and has code 0.\n\n"
        "The program's exit status is its return code. POSIX systems hand on the low eight bits alone; "
        "the last column shows them.\n\n"
        "| code | symbol | class | meaning | low eight bits |\n|---:|---|---|---|---:|\n";
    for (const code_row &row : codes)
        page += "| " + std::to_string(row.code) + " | `" + row.symbol + "` | " + class_name[row.response_class] +
                " | " + row.text + " | " + std::to_string(row.code % 256) + " |\n";
    return page;
}
