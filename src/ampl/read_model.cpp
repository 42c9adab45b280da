/* read_model.cpp - see ampl.h: the read of a stub, and what it holds. */
#include "ampl/ampl.h"

/* Bounds of this size do not exist for the tests of quadratic and nonlinear rows, whatever the parameter says: kept. */
static constexpr double endless = 1e16;

void stub_model_free(ZLR_task *task, stub_model *model)
{
    for (int32_t k = 0; k < model->num_quad; ++k) {
        if (model->qsubi != nullptr) ampl_free(task, &model->qsubi[k]);
        if (model->qsubj != nullptr) ampl_free(task, &model->qsubj[k]);
        if (model->qval != nullptr) ampl_free(task, &model->qval[k]);
    }
    ampl_free(task, &model->qval);
    ampl_free(task, &model->qsubj);
    ampl_free(task, &model->qsubi);
    ampl_free(task, &model->qnz);
    ampl_free(task, &model->conupper_as_given);
    ampl_free(task, &model->conlower_as_given);
    ampl_free(task, &model->c);
    ampl_free(task, &model->varupper);
    ampl_free(task, &model->varlower);
    ampl_free(task, &model->conupper);
    ampl_free(task, &model->conlower);
    stub_matrix_free(task, &model->matrix);
}

static int32_t make_arrays(ZLR_task *task, ASL *asl, stub_model *model)
{
    int32_t res = ZLR_RES_OK;
    if (!model->linear_are_known) res = stub_matrix_make(task, n_var, nzc, &model->matrix);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, n_con, &model->conlower);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, n_con, &model->conupper);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, n_var, &model->varlower);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, n_var, &model->varupper);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, n_var, &model->c);
    if (res != ZLR_RES_OK) return res;

    /* The reader fills these; without a place for the values it builds row lists (Cgrad) instead, as an evaluation needs. */
    A_vals = nlc == 0 && !model->nonlinear ? model->matrix.value : nullptr;
    A_rownos = nullptr;
    LUrhs = model->conlower;
    Urhsx = model->conupper;
    LUv = model->varlower;
    Uvx = model->varupper;
    return ZLR_RES_OK;
}

/* Sense, constant, and the coefficients of the columns that are in nothing nonlinear. */
static int32_t read_objective(ASL *asl, int32_t objno, stub_model *model)
{
    if (n_obj == 0 || objno < 0) return ZLR_RES_OK;
    if (objno >= n_obj) return ZLR_RES_ERR_INDEX;
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    for (const ograd *og = Ograd[objno]; og != nullptr; og = og->next)
        if (og->varno >= nlmax) model->c[og->varno] = og->coef;
    model->maximise = objtype[objno] == 1;
    model->cfix = objconst(objno);
    return ZLR_RES_OK;
}

/* A quadratic or nonlinear row has one side. Of several rows that have two the last one decides. */
static int32_t check_one_sided(const ASL *asl, const stub_model *model)
{
    int32_t res = ZLR_RES_OK;
    for (int32_t i = 0; i < nlc; ++i)
        if (model->conlower[i] > -endless && model->conupper[i] < endless)
            res = model->conlower[i] == model->conupper[i] ? ZLR_RES_ERR_QCON_EQUALITY : ZLR_RES_ERR_QCON_RANGE;
    return res;
}

/* The quadratic part of the objective (co is its number) or of a row (co is -1 less the row's number) as entry k. */
static int32_t find_quad(ZLR_task *task, ASL *asl, int32_t co, int32_t k, stub_model *model)
{
    fint *row = nullptr;
    fint *start = nullptr;
    real *value = nullptr;
    /* The three arrays stay on the stub object's own list and go with it: releasing them here would do so twice. */
    const int32_t num = ampl_quadratic_part(asl, co, &row, &start, &value);
    if (num < 0) {
        model->nonlinear = 1;
        return ZLR_RES_OK;
    }
    model->qnz[k] = num;
    if (num == 0) return ZLR_RES_OK;

    int32_t res = ampl_calloc(task, num, &model->qsubi[k]);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num, &model->qsubj[k]);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num, &model->qval[k]);
    if (res != ZLR_RES_OK) return res;
    for (int32_t j = 0; j < n_var; ++j)
        for (fint p = start[j]; p < start[j + 1]; ++p) {
            model->qsubi[k][p] = row[p];
            model->qsubj[k][p] = j;
            model->qval[k][p] = value[p];
        }
    return ZLR_RES_OK;
}

/* The check of a quadratic row moves its constant into the row's bounds; an evaluated row needs them as given. */
static int32_t keep_bounds(ZLR_task *task, const ASL *asl, stub_model *model)
{
    if (nlc == 0) return ZLR_RES_OK;
    int32_t res = ampl_calloc(task, nlc, &model->conlower_as_given);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, nlc, &model->conupper_as_given);
    if (res != ZLR_RES_OK) return res;
    std::copy_n(model->conlower, nlc, model->conlower_as_given);
    std::copy_n(model->conupper, nlc, model->conupper_as_given);
    return ZLR_RES_OK;
}

static int32_t find_quads(ZLR_task *task, ASL *asl, int32_t objno, stub_model *model)
{
    const int32_t num = nlc + 1;
    int32_t res = ampl_calloc(task, num, &model->qnz);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num, &model->qsubi);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num, &model->qsubj);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num, &model->qval);
    if (res != ZLR_RES_OK) return res;
    model->num_quad = num;

    res = keep_bounds(task, asl, model);
    if (res == ZLR_RES_OK && objno < nlo) res = find_quad(task, asl, objno, 0, model);
    for (int32_t i = 0; i < nlc && res == ZLR_RES_OK && !model->nonlinear; ++i)
        res = find_quad(task, asl, -1 - i, i + 1, model);
    qp_opify();
    if (model->nonlinear && model->conlower_as_given != nullptr) {
        std::copy_n(model->conlower_as_given, nlc, model->conlower);
        std::copy_n(model->conupper_as_given, nlc, model->conupper);
    }
    return res;
}

/* The check of the quadratic parts has left the linear ones in the lists: they are taken again. */
static void read_linear_objective(ASL *asl, int32_t objno, stub_model *model)
{
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    if (!model->nonlinear && objno >= 0 && objno < n_obj) {
        for (const ograd *og = Ograd[objno]; og != nullptr; og = og->next) model->c[og->varno] = og->coef;
        model->cfix = objconst(objno);
    }
    if (model->nonlinear && nlvo != 0) std::fill_n(model->c, nlmax, 0.0);
}

/* Where the coefficients come from that a matrix is built of. */
struct row_sources {
    int32_t first, end;       /* rows of the library's lists */
    const stub_matrix *known; /* further rows, from `first_known` on; null: none */
    int32_t first_known;
    double droptol;
};

/* What is no number is kept: the task refuses it. */
static bool is_kept(const row_sources *from, double coef) { return !(std::fabs(coef) <= from->droptol); }

/* Whether an entry is of one of the further rows, and kept. */
static bool is_wanted(const row_sources *from, int32_t p)
{
    return from->known->rowno[p] >= from->first_known && is_kept(from, from->known->value[p]);
}

/* Each start is the end of its column when this is done. */
static void count_coefs(const ASL *asl, const row_sources *from, int32_t *colstart)
{
    const stub_matrix *known = from->known;
    std::fill_n(colstart, n_var + 1, 0);
    for (int32_t i = from->first; i < from->end; ++i)
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next)
            if (is_kept(from, cg->coef)) ++colstart[cg->varno];
    for (int32_t j = 0; j < n_var; ++j) {
        if (known != nullptr)
            for (int32_t p = known->colstart[j]; p < known->colstart[j + 1]; ++p) colstart[j] += is_wanted(from, p);
        colstart[j + 1] += colstart[j];
    }
}

/* Columns are filled from the back, so that within a column the rows stand in descending order: each start comes down to its
 * column's beginning. */
static void fill_matrix(const ASL *asl, const row_sources *from, const stub_matrix *m)
{
    const stub_matrix *known = from->known;
    for (int32_t i = from->first; i < from->end; ++i)
        for (const cgrad *cg = Cgrad[i]; cg != nullptr; cg = cg->next) {
            if (!is_kept(from, cg->coef)) continue;
            const int32_t at = --m->colstart[cg->varno];
            m->rowno[at] = i;
            m->value[at] = cg->coef;
        }
    for (int32_t j = 0; known != nullptr && j < n_var; ++j)
        for (int32_t p = known->colstart[j]; p < known->colstart[j + 1]; ++p) {
            if (!is_wanted(from, p)) continue;
            const int32_t at = --m->colstart[j];
            m->rowno[at] = known->rowno[p];
            m->value[at] = known->value[p];
        }
}

/* The matrix from the row lists and the rows that are known. Rows that are evaluated have no linear coefficients in the
 * task. */
static int32_t build_matrix(ZLR_task *task, const ASL *asl, double droptol, stub_model *model)
{
    const int32_t first = model->nonlinear ? nlc : 0;
    row_sources from = {first, n_con, nullptr, nlc, droptol};
    stub_matrix built = model->matrix;
    if (model->linear_are_known) {
        built = {};
        const int32_t res = stub_matrix_make(task, n_var, nzc, &built);
        if (res != ZLR_RES_OK) {
            stub_matrix_free(task, &built);
            return res;
        }
        from.end = nlc;
        from.known = &model->matrix;
    }
    count_coefs(asl, &from, built.colstart);
    fill_matrix(asl, &from, &built);
    if (model->linear_are_known) stub_matrix_free(task, &model->matrix);
    model->matrix = built;
    model->row = built.rowno;
    return ZLR_RES_OK;
}

/* Where AMPL_EXTENDED lets a two-sided quadratic row through, the model goes to the evaluator as a whole. */
static int32_t check_rows(const ASL *asl, const ampl_data *adat, stub_model *model)
{
    const int32_t res = check_one_sided(asl, model);
    if (res == ZLR_RES_OK || !adat->extended) return res;
    model->nonlinear = 1;
    return ZLR_RES_OK;
}

/* The words of the AMPL Solver Library tell the line or the name of a function that is missing. */
static void tell_failed_read(ZLR_task *task, const ampl_data *adat)
{
    const size_t num = std::strlen(adat->said);
    ZLR_echotask(task, ZLR_STREAM_MSG, "** Fatal error: The AMPL stub cannot be taken: %s%s",
                 num == 0 ? "it is damaged" : adat->said, num == 0 || adat->said[num - 1] != '\n' ? "\n" : "");
}

/* `bigbound` is not used, as the bound of this size has always been fixed here. */
int32_t ZLR_amplreadmodel(ZLR_task *task, double droptol, double bigbound, ASL *asl, FILE **file, int32_t objno,
                          ampl_data *adat, stub_model *model)
{
    (void)bigbound;
    int32_t res = make_arrays(task, asl, model);
    if (res == ZLR_RES_OK) res = ampl_refuse_by_header(task, asl, adat);
    if (res != ZLR_RES_OK) return res;
    FILE *stub = *file;
    *file = nullptr; /* closed by the read, in any case */
    res = ampl_read_stub(asl, stub, adat);
    if (res != ZLR_RES_OK) {
        tell_failed_read(task, adat);
        return res;
    }
    res = ampl_put_names(task, asl, objno);
    if (res == ZLR_RES_OK) res = read_objective(asl, objno, model);
    if (res != ZLR_RES_OK) return res;

    if (nlc == 0 && model->linear_are_known) {
        model->row = model->matrix.rowno;
    } else if (nlc == 0 && A_colstarts != nullptr) {
        std::copy_n(A_colstarts, n_var + 1, model->matrix.colstart);
        model->row = A_rownos; /* as good as a copy, and stays as long */
    }
    if (nlc > 0) res = check_rows(asl, adat, model);
    if (res == ZLR_RES_OK && !model->nonlinear && (nlo > 0 || nlc > 0)) res = find_quads(task, asl, objno, model);
    if (res != ZLR_RES_OK) return res;
    read_linear_objective(asl, objno, model);
    return nlc > 0 ? build_matrix(task, asl, droptol, model) : ZLR_RES_OK;
}
