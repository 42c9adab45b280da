/* evaluate.cpp - see ampl.h: values of a nonlinear model at a point.
 *
 * All scratch is made before: `work` (first half: a gradient; second half: a map by column, all zero between uses), `ow`
 * and `y`. What the library has evaluated at a point it keeps, by rules that do not hold after a failure or for rows that
 * were asked for singly: a gradient is asked for only behind the value of the same function at the same point (need_row,
 * need_objective), and that is also what keeps a missing derivative in the error word. */
#include "ampl/ampl.h"

/* One call: its arguments, and how far it went wrong. */
struct evaluation {
    ampl_data *adat;
    double
        *x; /* the point, which the library takes so and leaves as it is; null: only weights and multipliers are set */
    double yo;
    const double *yc;
    double *objective;
    int32_t *numgrdobjnz, *grdobjsub;
    double *grdobjval;
    int32_t numi;
    const int32_t *subi;
    double *rows;
    const int32_t *grdconptrb, *grdconptre, *grdconsub;
    double *grdconval, *grdlag;
    int32_t maxnumhesnz, *numhesnz, *hessubi, *hessubj;
    double *hesval;
    fint error;      /* the error word, 0 between uses */
    fint sum_errors; /* once it is not 0 the later steps are passed over */
    int32_t code;
};

/* Takes the error word into the sum. True: there was an error. */
static bool has_failed(evaluation *e)
{
    ASL *asl = e->adat->asl;
    err_jmp = nullptr; /* after an error the library leaves it pointing to where nobody is */
    if (e->error == 0) return false;
    e->sum_errors += e->error;
    e->error = 0;
    e->code = ZLR_RES_ERR_NL_EVALUATION;
    return true;
}

static bool is_evaluated_row(const ASL *asl, int32_t i) { return i >= 0 && i < nlc; }

static bool has_objective(const evaluation *e)
{
    const ASL *asl = e->adat->asl;
    return ampl_nonlinear_columns(asl) > 0 && e->adat->objno >= 0 && e->adat->objno < n_obj;
}

/* ---- The point ---- */

/* Errors of common expressions come up here, on the way that ampl_evaluate has set. A derivative that one of them lacks is
 * noted for all functions, where co_index is that of a nonlinear one; cv_index, which names the common expression, is left
 * at -1, so that the gaps of single functions would be noted for all as well. */
static void take_point(evaluation *e)
{
    ASL *asl = e->adat->asl;
    co_index = nlo > 0 ? -1 : 0;
    err_jmp = err_jmp1;
    (void)xknown(e->x);
    err_jmp = nullptr;
    cv_index = 0;
}

/* ---- Single functions: false where there is no value ---- */

static bool need_objective(evaluation *e)
{
    ASL *asl = e->adat->asl;
    if (asl->i.noxval[e->adat->objno] == asl->i.nxval) return true;
    (void)objval(e->adat->objno, e->x, &e->error);
    return !has_failed(e);
}

static bool need_row(evaluation *e, int32_t i)
{
    ASL *asl = e->adat->asl;
    if (asl->i.ncxval[i] == asl->i.nxval) return true;
    (void)conival(i, e->x, &e->error);
    if (!has_failed(e)) return true;
    asl->i.ncxval[i] = 0; /* there are versions of the library that take note before they evaluate */
    return false;
}

/* Dense, into the first half of `work`. */
static bool objective_gradient(evaluation *e)
{
    const ampl_data *adat = e->adat;
    ASL *asl = adat->asl;
    if (!need_objective(e)) return false;
    objgrd(adat->objno, e->x, adat->work, &e->error);
    return !has_failed(e);
}

/* One value a term of the row, in the order of its list. congrd_mode is 1. */
static bool row_gradient(evaluation *e, int32_t i)
{
    ASL *asl = e->adat->asl;
    if (!need_row(e, i)) return false;
    congrd(i, e->x, e->adat->work, &e->error);
    return !has_failed(e);
}

/* ---- Weights and multipliers ---- */

/* The weights have no reader: the Hessian is taken with weights null and scaled afterwards. Kept, as what is prepared is
 * part of the job's record. */
static void set_weights(const evaluation *e)
{
    const ampl_data *adat = e->adat;
    if (adat->ow == nullptr) return;
    std::fill_n(adat->ow, adat->numobj, 0.0);
    if (adat->objno >= 0 && adat->objno < adat->numobj) adat->ow[adat->objno] = e->yo;
}

/* By position, though the Hessian reads them by row number: kept. The two are one where the rows are asked for in order from
 * the first, as the optimiser does. Without `yc` those of the call before stay. */
static void set_multipliers(const evaluation *e)
{
    const ASL *asl = e->adat->asl;
    if (e->yc == nullptr) return;
    for (int32_t k = 0; k < std::min(e->numi, n_con); ++k) {
        const int32_t i = e->subi[k];
        e->adat->y[k] = i >= 0 && i < n_con ? -e->yc[i] : 0.0;
    }
}

/* ---- Steps ---- */

/* The constant term stays in. */
static void put_objective(evaluation *e)
{
    ASL *asl = e->adat->asl;
    *e->objective = 0.0;
    if (!has_objective(e)) return;
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    double value = objval(e->adat->objno, e->x, &e->error);
    if (has_failed(e)) return;
    for (const ograd *og = Ograd[e->adat->objno]; og != nullptr; og = og->next)
        if (og->varno >= nlmax) value -= og->coef * e->x[og->varno];
    *e->objective = value;
}

static void put_objective_gradient(evaluation *e)
{
    const ampl_data *adat = e->adat;
    const ASL *asl = adat->asl;
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    int32_t num = 0;
    if (has_objective(e) && objective_gradient(e))
        for (const ograd *og = Ograd[adat->objno]; og != nullptr; og = og->next) {
            if (og->varno >= nlmax) continue;
            if (e->grdobjsub != nullptr) e->grdobjsub[num] = og->varno;
            if (e->grdobjval != nullptr) e->grdobjval[num] = adat->work[og->varno];
            ++num;
        }
    *e->numgrdobjnz = num;
}

/* The rows from position k on that adjoin, which can be asked for together. */
static int32_t adjoining_rows(const evaluation *e, int32_t k)
{
    const ASL *asl = e->adat->asl;
    const int32_t most = std::min(e->numi - k, nlc - e->subi[k]);
    int32_t num = 1;
    while (num < most && e->subi[k + num] == e->subi[k] + num) ++num;
    return num;
}

/* Behind an error nothing more is asked for. */
static void put_rows(evaluation *e)
{
    ASL *asl = e->adat->asl;
    const int first = n_conjac[0];
    const int end = n_conjac[1];
    int32_t num = 1;
    for (int32_t k = 0; k < e->numi && e->sum_errors == 0; k += num) {
        const int32_t i = e->subi[k];
        const bool is_given = is_evaluated_row(asl, i);
        num = is_given ? adjoining_rows(e, k) : 1;
        std::fill_n(&e->rows[k], num, 0.0);
        if (!is_given) continue;
        n_conjac[0] = i;
        n_conjac[1] = i + num;
        conval(e->x, &e->rows[k], &e->error);
        (void)has_failed(e);
    }
    n_conjac[0] = first;
    n_conjac[1] = end;
}

/* Whether a row's entries are asked for as its list has them, each column once. On the way the list learns where they stand,
 * which is where the library puts all rows' gradients together. */
static bool take_places(const evaluation *e, int32_t k)
{
    const ASL *asl = e->adat->asl;
    int32_t p = e->grdconptrb[k];
    int32_t last = -1;
    for (cgrad *cg = Cgrad[e->subi[k]]; cg != nullptr; cg = cg->next, ++p) {
        if (p >= e->grdconptre[k] || e->grdconsub[p] != cg->varno || cg->varno <= last) return false;
        last = cg->varno;
        cg->goff = p;
    }
    return p == e->grdconptre[k];
}

/* All rows together, straight to the caller, as an optimiser asks for them: row by row takes twice as long, mostly waiting
 * for memory. False: they are not asked for so, or one of them may have no gradient. */
static bool put_joint_gradients(evaluation *e)
{
    ASL *asl = e->adat->asl;
    if (!is_evaluated_row(asl, e->subi[0]) || adjoining_rows(e, 0) < e->numi || asl->i.Derrs != nullptr) return false;
    for (int32_t k = 0; k < e->numi; ++k)
        if (asl->i.ncxval[e->subi[k]] != asl->i.nxval || !take_places(e, k)) return false;
    const int first = n_conjac[0];
    const int end = n_conjac[1];
    n_conjac[0] = e->subi[0];
    n_conjac[1] = e->subi[0] + e->numi;
    jacval(e->x, e->grdconval, &e->error);
    n_conjac[0] = first;
    n_conjac[1] = end;
    err_jmp = nullptr;
    const bool is_done = e->error == 0;
    e->error = 0; /* who it was is found row by row */
    return is_done;
}

/* Spread out by column, taken from there as the caller's entries ask, and cleared again: a row costs its own entries. */
static void put_row_gradient(evaluation *e, int32_t k, double *map)
{
    const ASL *asl = e->adat->asl;
    const int32_t i = e->subi[k];
    const double *value = e->adat->work;
    const bool is_given = is_evaluated_row(asl, i) && row_gradient(e, i);
    if (is_given)
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next) map[cg->varno] = *value++;
    for (int32_t p = e->grdconptrb[k]; p < e->grdconptre[k]; ++p)
        e->grdconval[p] = is_given ? map[e->grdconsub[p]] : 0.0;
    if (is_given)
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next) map[cg->varno] = 0.0;
}

/* Goes on behind an error. */
static void put_row_gradients(evaluation *e)
{
    ASL *asl = e->adat->asl;
    if (put_joint_gradients(e)) return;
    double *map = e->adat->work + n_var;
    std::fill_n(map, n_var, 0.0);
    const int mode = asl->i.congrd_mode;
    asl->i.congrd_mode = 1;
    for (int32_t k = 0; k < e->numi; ++k) put_row_gradient(e, k, map);
    asl->i.congrd_mode = mode;
}

/* Of weight times objective plus y times rows, where `y` has the sign turned. */
static void put_lagrangian_gradient(evaluation *e)
{
    const ampl_data *adat = e->adat;
    ASL *asl = adat->asl;
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    std::fill_n(e->grdlag, n_var, 0.0);
    if (has_objective(e) && objective_gradient(e))
        for (const ograd *og = Ograd[adat->objno]; og != nullptr; og = og->next)
            if (og->varno < nlmax) e->grdlag[og->varno] = adat->work[og->varno] * e->yo;

    const int mode = asl->i.congrd_mode;
    asl->i.congrd_mode = 1;
    for (int32_t k = 0; k < std::min(e->numi, n_con) && e->sum_errors == 0; ++k) {
        const int32_t i = e->subi[k];
        if (!is_evaluated_row(asl, i) || adat->y[k] == 0.0 || !row_gradient(e, i)) continue;
        const double *value = adat->work;
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next) e->grdlag[cg->varno] += adat->y[k] * *value++;
    }
    asl->i.congrd_mode = mode;
}

/* ---- Hessian ---- */

/* The library's Hessian has no error word, and tells of a missing derivative of a row once only, of one of the objective
 * not at all: every function that it takes is asked for before, its gradient where the point has such a gap. */
static bool can_have_hessian(evaluation *e, const double *y)
{
    ASL *asl = e->adat->asl;
    if (has_objective(e) && !need_objective(e)) return false;
    for (int32_t i = 0; y != nullptr && i < nlc; ++i)
        if (y[i] != 0.0 && !need_row(e, i)) return false;
    if (asl->i.Derrs == nullptr) return true;
    if (has_objective(e) && !objective_gradient(e)) return false;
    const int mode = asl->i.congrd_mode;
    asl->i.congrd_mode = 1;
    for (int32_t i = 0; y != nullptr && i < nlc && e->sum_errors == 0; ++i)
        if (y[i] != 0.0) (void)row_gradient(e, i);
    asl->i.congrd_mode = mode;
    return e->sum_errors == 0;
}

/* `y` becomes relative to the objective's weight, since the whole is multiplied by that: with the weight 0 the rows' part is
 * lost. Kept, as optimisers that know of it take the difference of two Hessians of weight 1. */
static const double *scale_multipliers(const evaluation *e)
{
    const ASL *asl = e->adat->asl;
    double *y = e->adat->y;
    if (e->numi < 1) return nullptr;
    for (int32_t k = 0; k < e->numi && e->yo != 0.0; ++k)
        if (e->subi[k] >= 0 && e->subi[k] < n_con) y[e->subi[k]] /= e->yo;
    return y;
}

/* The lower triangle. Values are scaled only where the count is asked for: kept. */
static void put_entries(const evaluation *e)
{
    const ASL *asl = e->adat->asl;
    const SputInfo *pattern = asl->i.sputinfo_;
    for (int32_t j = 0; j < ampl_nonlinear_columns(asl); ++j)
        for (fint p = pattern->hcolstarts[j]; p < pattern->hcolstarts[j + 1]; ++p) {
            if (e->hessubi != nullptr) e->hessubi[p] = std::max(pattern->hrownos[p], j);
            if (e->hessubj != nullptr) e->hessubj[p] = std::min(pattern->hrownos[p], j);
            if (e->hesval != nullptr) e->hesval[p] *= e->yo;
        }
}

/* False: it does not fit: into the room, or a pattern that was built for less. The library would end the process over the
 * latter, and write beyond the former, so that both are looked at before it is asked. */
static bool put_hessian(evaluation *e)
{
    ampl_data *adat = e->adat;
    ASL *asl = adat->asl;
    const double *y = scale_multipliers(e);
    if (!can_have_hessian(e, y)) return true;
    if (e->numhesnz != nullptr) *e->numhesnz = adat->numhesnz;
    if (!adat->hessianready || e->maxnumhesnz < adat->numhesnz) return false;
    if (y != nullptr && !asl->i.sputinfo_->y) return false;
    if (e->hesval != nullptr) {
        err_jmp = err_jmp1;
        sphes(e->hesval, adat->objno, nullptr, const_cast<double *>(y));
        err_jmp = nullptr;
    }
    if (e->numhesnz != nullptr) put_entries(e);
    return true;
}

/* ---- The whole ---- */

static bool wants_values(const evaluation *e)
{
    return e->objective != nullptr || e->numgrdobjnz != nullptr || e->rows != nullptr || e->grdconptrb != nullptr ||
           e->grdlag != nullptr || e->maxnumhesnz > 0;
}

static int32_t take_steps(void *handle)
{
    auto *e = static_cast<evaluation *>(handle);
    ASL *asl = e->adat->asl;
    if (e->x != nullptr) take_point(e);
    set_weights(e);
    set_multipliers(e);
    if (e->objective != nullptr) put_objective(e);
    if (e->numgrdobjnz != nullptr && e->sum_errors == 0) put_objective_gradient(e);
    if (e->rows != nullptr && e->sum_errors == 0) put_rows(e);
    if (e->grdconptrb != nullptr && e->numi > 0 && e->sum_errors == 0) put_row_gradients(e);
    if (e->grdlag != nullptr && e->sum_errors == 0) put_lagrangian_gradient(e);
    if (e->maxnumhesnz > 0 && e->sum_errors == 0 && !put_hessian(e)) return 1;
    asl->i.x_known = 0;
    return e->code;
}

int32_t ZLR_nlgetvafunc(void *handle, const double *xx, double yo, const double *yc, double *objective,
                        int32_t *numgrdobjnz, int32_t *grdobjsub, double *grdobjval, int32_t numi, const int32_t *subi,
                        double *rows, const int32_t *grdconptrb, const int32_t *grdconptre, const int32_t *grdconsub,
                        double *grdconval, double *grdlag, int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi,
                        int32_t *hessubj, double *hesval)
{
    evaluation e = {};
    e.adat = static_cast<ampl_data *>(handle);
    e.x = const_cast<double *>(xx);
    e.yo = yo;
    e.yc = yc;
    e.objective = objective;
    e.numgrdobjnz = numgrdobjnz;
    e.grdobjsub = grdobjsub;
    e.grdobjval = grdobjval;
    e.numi = numi;
    e.subi = subi;
    e.rows = rows;
    e.grdconptrb = grdconptrb;
    e.grdconptre = grdconptre;
    e.grdconsub = grdconsub;
    e.grdconval = grdconval;
    e.grdlag = grdlag;
    e.maxnumhesnz = maxnumhesnz;
    e.numhesnz = numhesnz;
    e.hessubi = hessubi;
    e.hessubj = hessubj;
    e.hesval = hesval;
    if (xx == nullptr && wants_values(&e)) return ZLR_RES_ERR_NL_EVALUATION;
    return ampl_evaluate(e.adat->asl, take_steps, &e);
}
