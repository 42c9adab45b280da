/* sensitivity.cpp - see ampl.h: sides of rows and costs, and the suffixes up, down and current. */
#include "ampl/ampl.h"

/* ---- The analysis ---- */

static int32_t make_primal(ZLR_task *task, primal_sens *p)
{
    int32_t res = ampl_calloc(task, p->numi, &p->subi);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, p->numi, &p->marki);
    for (double **out : {&p->leftpricei, &p->rightpricei, &p->leftrangei, &p->rightrangei})
        if (res == ZLR_RES_OK) res = ampl_calloc(task, p->numi, out);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, p->numj, &p->subj);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, p->numj, &p->markj);
    for (double **out : {&p->leftpricej, &p->rightpricej, &p->leftrangej, &p->rightrangej})
        if (res == ZLR_RES_OK) res = ampl_calloc(task, p->numj, out);
    return res;
}

static int32_t make_dual(ZLR_task *task, dual_sens *d)
{
    int32_t res = ampl_calloc(task, d->numj, &d->subj);
    for (double **out : {&d->leftprice, &d->rightprice, &d->leftrange, &d->rightrange})
        if (res == ZLR_RES_OK) res = ampl_calloc(task, d->numj, out);
    return res;
}

/* The side of a row that is looked at: of a ranged one the lower, of a free one none. */
struct row_side {
    bool exists, is_upper;
    double value;
};

static int32_t side_of_row(ZLR_task *task, int32_t i, row_side *side)
{
    int32_t key = 0;
    double lower = 0.0;
    double upper = 0.0;
    const int32_t res = ZLR_getbound(task, ZLR_ACC_CON, i, &key, &lower, &upper);
    const bool is_upper = key != ZLR_BK_LO && key != ZLR_BK_RA;
    *side = {key != ZLR_BK_FR, is_upper, is_upper ? upper : lower};
    return res;
}

/* One side a row; without free rows the list may be shorter than the rows. */
static int32_t list_rows(ZLR_task *task, int32_t num_con, primal_sens *p)
{
    int32_t listed = 0;
    for (int32_t i = 0; i < num_con; ++i) {
        row_side side;
        const int32_t res = side_of_row(task, i, &side);
        if (res != ZLR_RES_OK) return res;
        if (!side.exists) continue;
        p->subi[listed] = i;
        p->marki[listed] = side.is_upper ? 1 : 0;
        ++listed;
    }
    p->numi = listed;
    return ZLR_RES_OK;
}

static int32_t analyse(ampl_data *adat)
{
    ZLR_task *task = adat->task;
    primal_sens *p = &adat->primalsens;
    dual_sens *d = &adat->dualsens;
    int32_t num_con = 0;
    int32_t res = ZLR_getnumcon(task, &num_con);
    if (res == ZLR_RES_OK) res = ZLR_getnumvar(task, &d->numj);
    if (res != ZLR_RES_OK) return res;
    p->numi = num_con;
    p->numj = 0; /* bounds of columns are never analysed */
    res = make_primal(task, p);
    if (res == ZLR_RES_OK) res = make_dual(task, d);
    if (res == ZLR_RES_OK) res = list_rows(task, num_con, p);
    if (res != ZLR_RES_OK) return res;
    for (int32_t j = 0; j < d->numj; ++j) d->subj[j] = j;

    if (p->numi != 0 || p->numj != 0)
        res = ZLR_primalsensitivity(task, p->numi, p->subi, p->marki, p->numj, p->subj, p->markj, p->leftpricei,
                                    p->rightpricei, p->leftrangei, p->rightrangei, p->leftpricej, p->rightpricej,
                                    p->leftrangej, p->rightrangej);
    if (res == ZLR_RES_OK && d->numj != 0)
        res = ZLR_dualsensitivity(task, d->numj, d->subj, d->leftprice, d->rightprice, d->leftrange, d->rightrange);
    return res;
}

/* After a failure both groups are empty, so that nothing is read from arrays that may not exist. */
int32_t ampl_analyse_sensitivity(ampl_data *adat)
{
    const int32_t res = analyse(adat);
    if (res != ZLR_RES_OK) {
        adat->primalsens.numi = 0;
        adat->dualsens.numj = 0;
    }
    return res;
}

void ampl_free_sensitivity(ampl_data *adat)
{
    ZLR_task *task = adat->task;
    primal_sens *p = &adat->primalsens;
    dual_sens *d = &adat->dualsens;
    for (int32_t **block : {&p->subi, &p->marki, &p->subj, &p->markj, &d->subj}) ampl_free(task, block);
    for (double **block :
         {&p->leftpricei, &p->rightpricei, &p->leftrangei, &p->rightrangei, &p->leftpricej, &p->rightpricej,
          &p->leftrangej, &p->rightrangej, &d->leftprice, &d->rightprice, &d->leftrange, &d->rightrange})
        ampl_free(task, block);
}

/* ---- The suffixes ---- */

/* The present sides of the listed rows, in their order. */
static int32_t current_sides(ZLR_task *task, int32_t num_con, double *value)
{
    int32_t at = 0;
    for (int32_t i = 0; i < num_con; ++i) {
        row_side side;
        const int32_t res = side_of_row(task, i, &side);
        if (res != ZLR_RES_OK) return res;
        if (side.exists) value[at++] = side.value;
    }
    return ZLR_RES_OK;
}

/* One suffix: values scattered by index into an array that goes with the stub object. Entries that are not listed (those
 * of free rows) are 0. */
static int32_t put_suffix(ASL *asl, const char *name, int kind, int32_t length, int32_t num, const int32_t *sub,
                          const double *value, bool by_index)
{
    auto *array = static_cast<double *>(M1alloc(std::max<size_t>(static_cast<size_t>(length), 1) * sizeof(double)));
    if (array == nullptr) return ZLR_RES_ERR_SPACE;
    std::fill_n(array, length, 0.0); /* the library does not clear what it hands out */
    for (int32_t k = 0; k < num; ++k) array[sub[k]] = value[by_index ? sub[k] : k];
    suf_rput(name, kind, array);
    return ZLR_RES_OK;
}

/* Ranges come as changes; AMPL wants the values at their ends. */
static int32_t put_suffixes(ASL *asl, ampl_data *adat, double *cost, double *side)
{
    const primal_sens *p = &adat->primalsens;
    const dual_sens *d = &adat->dualsens;
    int32_t res = current_sides(adat->task, n_con, side);
    if (res != ZLR_RES_OK) return res;
    for (int32_t k = 0; k < p->numi; ++k) {
        p->leftrangei[k] += side[k];
        p->rightrangei[k] += side[k];
    }
    res = ZLR_getc(adat->task, cost);
    if (res != ZLR_RES_OK) return res;
    for (int32_t k = 0; k < d->numj; ++k) {
        d->leftrange[k] += cost[d->subj[k]];
        d->rightrange[k] += cost[d->subj[k]];
    }

    res = put_suffix(asl, "up", ASL_Sufkind_var, n_var, d->numj, d->subj, d->rightrange, false);
    if (res == ZLR_RES_OK) res = put_suffix(asl, "down", ASL_Sufkind_var, n_var, d->numj, d->subj, d->leftrange, false);
    if (res == ZLR_RES_OK) res = put_suffix(asl, "current", ASL_Sufkind_var, n_var, d->numj, d->subj, cost, true);
    if (res == ZLR_RES_OK) res = put_suffix(asl, "up", ASL_Sufkind_con, n_con, p->numi, p->subi, p->rightrangei, false);
    if (res == ZLR_RES_OK)
        res = put_suffix(asl, "down", ASL_Sufkind_con, n_con, p->numi, p->subi, p->leftrangei, false);
    if (res == ZLR_RES_OK) res = put_suffix(asl, "current", ASL_Sufkind_con, n_con, p->numi, p->subi, side, false);
    return res;
}

int32_t ampl_put_sensitivity(ASL *asl, ampl_data *adat)
{
    double *cost = nullptr;
    double *side = nullptr;
    int32_t res = ampl_calloc(adat->task, n_var, &cost);
    if (res == ZLR_RES_OK) res = ampl_calloc(adat->task, n_con, &side);
    if (res == ZLR_RES_OK) res = put_suffixes(asl, adat, cost, side);
    ampl_free(adat->task, &side);
    ampl_free(adat->task, &cost);
    return res;
}
