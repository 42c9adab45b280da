/* solution.cpp - see ampl.h: what AMPL gets back. */
#include "ampl/ampl.h"

static constexpr size_t text_bytes = 1024;
static constexpr size_t report_bytes = 6 * text_bytes; /* two status texts and four lines */

/* AMPL's solve result codes of this solver. The texts are for whoever reads this: reports take the library's words. */
struct solve_result {
    const char *text;
    int32_t code;
};
enum {
    RESULT_OPTIMAL,
    RESULT_SUBOPTIMAL,
    RESULT_SUPEROPTIMAL,
    RESULT_INFEASIBLE,
    RESULT_UNBOUNDED,
    RESULT_UNKNOWN,
    RESULT_ILL_POSED,
    RESULT_LIMIT,
    RESULT_NEAR_OPTIMAL
};
static constexpr solve_result solve_results[] = {
    {"optimal solution", 0},
    {"suboptimal primal solution", 100},
    {"superoptimal (dual feasible) solution", 101},
    {"primal infeasible", 200},
    {"dual infeasible", 300},
    {"unknown solution", 500},
    {"unknown solution, ill-posed problem", 501},
    {"resource limit", 400},
    {"near optimal solution", 150},
};

/* What was found of one kind, as AMPL sees it. */
struct found {
    int32_t num_con, num_var;
    int32_t prosta, solsta;
    double primal, dual;
    double *x, *y; /* of the task's allocator */
    int *status;   /* M1alloc: rows, then columns */
};

static int32_t result_row(const found *f)
{
    if (f->prosta == ZLR_PRO_ILL_POSED) return RESULT_ILL_POSED;
    switch (f->solsta) {
    case ZLR_SOLSTA_OPTIMAL:
    case ZLR_SOLSTA_INTEGER_OPTIMAL: return RESULT_OPTIMAL;
    case ZLR_SOLSTA_PRIM_FEAS: return RESULT_SUBOPTIMAL;
    case ZLR_SOLSTA_DUAL_FEAS: return RESULT_SUPEROPTIMAL;
    case ZLR_SOLSTA_PRIM_INFEAS_CER: return RESULT_INFEASIBLE;
    case ZLR_SOLSTA_DUAL_INFEAS_CER: return RESULT_UNBOUNDED;
    case ZLR_SOLSTA_NEAR_OPTIMAL:
    case ZLR_SOLSTA_NEAR_INTEGER_OPTIMAL: return RESULT_NEAR_OPTIMAL;
    default: return -1;
    }
}

static int sstatus_of(int32_t key)
{
    static constexpr int values[] = {0, 1, 6, 3, 4, 5};
    return key >= 0 && key <= ZLR_SK_FIXED ? values[key] : 0;
}

/* Sizes and arrays. What is written has the stub's sizes: those stand in where the task's are not to be had. */
static int32_t make_found(ASL *asl, ampl_data *adat, found *f)
{
    f->num_con = n_con;
    f->num_var = n_var;
    (void)ZLR_getnumcon(adat->task, &f->num_con);
    (void)ZLR_getnumvar(adat->task, &f->num_var);
    const auto num = static_cast<size_t>(f->num_con) + static_cast<size_t>(f->num_var);
    int32_t res = ampl_calloc(adat->task, f->num_con, &f->y);
    if (res == ZLR_RES_OK) res = ampl_calloc(adat->task, f->num_var, &f->x);
    if (res != ZLR_RES_OK) return res;
    f->status = static_cast<int *>(M1alloc(std::max<size_t>(num, 1) * sizeof(int)));
    if (f->status == nullptr) return ZLR_RES_ERR_SPACE;
    std::fill_n(f->status, num, 0);
    return ZLR_RES_OK;
}

/* A solution that is not there is no error: AMPL gets zeros and the code for unknown. */
static void fetch_solution(ampl_data *adat, int32_t kind, found *f)
{
    int32_t *rows = f->status;
    int32_t *columns = f->status + f->num_con;
    const int32_t num = f->num_con + f->num_var;
    const int32_t res = ZLR_getsolution(adat->task, kind, &f->prosta, &f->solsta, rows, columns, nullptr, nullptr, f->x,
                                        f->y, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (res == ZLR_RES_OK) {
        (void)ZLR_getprimalobj(adat->task, kind, &f->primal);
        if (kind != ZLR_SOL_ITG) (void)ZLR_getdualobj(adat->task, kind, &f->dual);
    } else {
        f->prosta = 0;
        f->solsta = 0;
        std::fill_n(f->x, f->num_var, 0.0);
        std::fill_n(f->y, f->num_con, 0.0);
        std::fill_n(f->status, num, 0);
    }
    for (int32_t k = 0; k < num; ++k) f->status[k] = sstatus_of(f->status[k]);
}

static void add_objective(char *report, const char *title, double value)
{
    char number[64];
    g_fmt(number, value);
    Sprintf(report + std::strlen(report), "%-17s : %s\n", title, number);
}

static void compose_report(ZLR_task *task, int32_t kind, int32_t row, const found *f, char *report)
{
    char problem[text_bytes] = "";
    char solution[text_bytes] = "";
    (void)ZLR_prostatostr(task, f->prosta, problem);
    (void)ZLR_solstatostr(task, f->solsta, solution);
    Sprintf(report, "ZELOR finished.\n%-17s : %s\n%-17s : %s\n", "Problem status", problem, "Solution status",
            solution);
    if (row < RESULT_OPTIMAL || row > RESULT_SUPEROPTIMAL) return;
    add_objective(report, "Primal objective", f->primal);
    if (kind != ZLR_SOL_ITG) add_objective(report, "Dual objective", f->dual);
}

/* AMPL_EXTENDED: a stop or a limit says so, with code 400 where it has left no answer. */
static void extend_report(ASL *asl, const ampl_data *adat, int32_t result, int32_t row, char *report)
{
    char text[text_bytes] = "";
    if (result == ZLR_RES_OK) return;
    /* A point on the way out of all bounds is feasible, and no answer. */
    if (row < 0 || result == ZLR_RES_TRM_DIVERGING) solve_code = ampl_failure_code(result);
    (void)ZLR_getcodedesc(result, nullptr, text);
    Sprintf(report + std::strlen(report), "ZELOR return code - %d (%s)\n", result, text);
    ampl_add_reason(adat, report);
}

/* Information items that have always been asked for here, and are not used. */
static void read_information(ZLR_task *task)
{
    int32_t value = 0;
    for (const int32_t item : {ZLR_IINF_IPM_ITERATIONS, ZLR_IINF_SIMPLEX_ITERATIONS, ZLR_IINF_NODES})
        (void)ZLR_getintinf(task, item, &value);
}

/* The solution as AMPL wants it, written. Returns the code of the suffixes. */
static int32_t write_found(ASL *asl, Option_Info *options, int32_t result, int32_t kind, ampl_data *adat, found *f,
                           int32_t *code)
{
    char report[report_bytes] = "";
    fetch_solution(adat, kind, f);
    suf_iput("sstatus", ASL_Sufkind_con, f->status);
    suf_iput("sstatus", ASL_Sufkind_var, f->status + f->num_con);

    const int32_t row = result_row(f);
    solve_code = row < 0 ? 500 : solve_results[row].code;
    compose_report(adat->task, kind, row, f, report);
    if (adat->extended) extend_report(asl, adat, result, row, report);
    if (code != nullptr) *code = solve_code;

    int32_t res = adat->sensitivity ? ampl_put_sensitivity(asl, adat) : ZLR_RES_OK;
    if (adat->extended) (void)ampl_put_reduced_costs(asl, adat, kind);
    ampl_write_answer(asl, report, f->x, f->y, options);
    return res;
}

static void report_failure(ASL *asl, int32_t result, const ampl_data *adat, bool is_written)
{
    char text[text_bytes] = "";
    char report[2 * text_bytes];
    if (adat == nullptr || !adat->extended)
        solve_code = result + 501;
    else if (!is_written)
        solve_code = ampl_failure_code(result);
    (void)ZLR_getcodedesc(result, nullptr, text);
    Sprintf(report, "ZELOR finished.\nZELOR return code - %d (%s)\n", result, text);
    if (result == ZLR_RES_ERR_AMPL_STUB) {
        Printf("Cannot write solution solution because of invalid AMPL stub\n");
    } else if (!is_written) {
        ampl_write_answer(asl, report, nullptr, nullptr, nullptr);
    }
}

int32_t ZLR_amplout(ASL *asl, Option_Info *options, int32_t result, int32_t kind, ampl_data *adat, int32_t *code)
{
    int32_t res = ZLR_RES_OK;
    bool is_written = false;
    if (code != nullptr) *code = 0;
    if (asl == nullptr) return ZLR_RES_OK;
    if (adat == nullptr && result != ZLR_RES_ERR_AMPL_STUB) {
        Printf("ZLR_amplout: adat==NULL\n");
        mainexit_ASL(1);
        return ZLR_RES_OK;
    }
    if (result != ZLR_RES_ERR_AMPL_STUB) {
        found f = {};
        read_information(adat->task);
        res = make_found(asl, adat, &f);
        if (res == ZLR_RES_OK) {
            res = write_found(asl, options, result, kind, adat, &f, code);
            is_written = true;
        } else {
            result = res;
        }
        ampl_free(adat->task, &f.y);
        ampl_free(adat->task, &f.x);
    }
    if (result != ZLR_RES_OK) report_failure(asl, result, adat, is_written);
    if (code != nullptr) *code = solve_code;
    return res;
}
