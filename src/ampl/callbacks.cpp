/* callbacks.cpp - see ampl.h: what the optimiser asks of the structure of a nonlinear model.
 *
 * The task's linear part holds the objective's terms on columns from `nlmax` up and the rows from `nlc` up; everything else
 * is told here and evaluated in evaluate.cpp: the objective's gradient on the columns below `nlmax`, and the rows below
 * `nlc` as a whole, their linear terms included. The library's lists of terms give the order of all entries. */
#include "ampl/ampl.h"

/* Stores no more than there is room for in an array as long as there are nonlinear columns. */
static int32_t list_objective(const ampl_data *adat, int32_t *sub)
{
    const ASL *asl = adat->asl;
    if (nlvo <= 0 || adat->objno < 0 || adat->objno >= adat->numobj) return 0;
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    int32_t num = 0;
    for (const ograd *og = Ograd[adat->objno]; og != nullptr; og = og->next) {
        if (og->varno >= nlmax) continue;
        if (sub != nullptr && num < nlmax) sub[num] = og->varno;
        ++num;
    }
    return num;
}

/* More entries than columns: a column comes twice in the stub. No answer is worth having then, and the process ends; the
 * message compares with another count than it names. Both are kept: scripts look for them. */
static void tell_objective(ampl_data *adat, int32_t *num, int32_t *sub)
{
    const ASL *asl = adat->asl;
    const int32_t found = list_objective(adat, sub);
    if (found > ampl_nonlinear_columns(asl)) {
        Printf("ZLR_nlgetspfunc: Too large num. num: %d nlvo: %d\n", found, nlvo);
        mainexit_ASL(0);
    }
    if (num == nullptr) return;
    *num = found;
    adat->numgrdobjnz = found;
}

/* All terms of the row, linear columns too; a row that is not evaluated has none. */
static void tell_row(const ASL *asl, int32_t i, int32_t *num, int32_t *sub)
{
    int32_t found = 0;
    if (i >= 0 && i < nlc)
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next, ++found)
            if (sub != nullptr) sub[found] = cg->varno;
    if (num != nullptr) *num = found;
}

/* Each call that asks for the count builds the pattern anew, by what it says of the objective's weight and the multipliers.
 * Kept: an optimiser that asks again for another selection gets the pattern of that one. */
static void build_pattern(ampl_data *adat, int32_t yo, int32_t numycnz, int32_t *num)
{
    ASL *asl = adat->asl;
    adat->numhesnz = sphsetup(adat->objno, yo != 0, numycnz > 0, 1);
    adat->hessianready = 1;
    if (num != nullptr) *num = adat->numhesnz;
}

/* The library builds the upper triangle by columns, so that a column's number is never below its rows': taken the other way
 * round they are the lower triangle. */
static void tell_pattern(const ASL *asl, int32_t *subi, int32_t *subj)
{
    const SputInfo *pattern = asl->i.sputinfo_;
    for (int32_t j = 0; j < ampl_nonlinear_columns(asl); ++j)
        for (fint p = pattern->hcolstarts[j]; p < pattern->hcolstarts[j + 1]; ++p) {
            subi[p] = j;
            subj[p] = pattern->hrownos[p];
        }
}

int32_t ZLR_nlgetspfunc(void *handle, int32_t *numgrdobjnz, int32_t *grdobjsub, int32_t i, int32_t *convali,
                        int32_t *grdconinz, int32_t *grdconisub, int32_t yo, int32_t numycnz, const int32_t *ycsub,
                        int32_t maxnumhesnz, int32_t *numhesnz, int32_t *hessubi, int32_t *hessubj)
{
    (void)ycsub; /* which rows have multipliers is not looked at: the pattern is that of all rows or of none */
    auto *adat = static_cast<ampl_data *>(handle);
    const ASL *asl = adat->asl;
    if (numgrdobjnz != nullptr || grdobjsub != nullptr) tell_objective(adat, numgrdobjnz, grdobjsub);
    if (convali != nullptr) *convali = i >= 0 && i < nlc;
    if (grdconinz != nullptr || grdconisub != nullptr) tell_row(asl, i, grdconinz, grdconisub);
    if (numhesnz != nullptr || (maxnumhesnz != 0 && !adat->hessianready)) build_pattern(adat, yo, numycnz, numhesnz);
    if (maxnumhesnz == 0) return 0;
    if (maxnumhesnz < adat->numhesnz) return 1;
    if (hessubi != nullptr && hessubj != nullptr) tell_pattern(asl, hessubi, hessubj);
    return 0;
}
