/* transfer.cpp - see ampl.h: a stub becomes task data. */
#include "ampl/stub_check.h"

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

static constexpr int32_t name_bytes = 1024;

/* What one call of ZLR_amplin works with, beside what it hands back. */
struct transfer {
    ZLR_task *task;
    ampl_data *adat;
    Option_Info *options;
    char *name; /* of the stub, name_bytes */
    int32_t objno;
    double infinite, droptol;
    int32_t *conkey, *varkey;
    stub_model model;
    stub_suffixes suffixes;
    const SufDesc *cone;
};

static int32_t make_records(ZLR_task *task, ampl_data **adat, Option_Info **options)
{
    int32_t res = ampl_calloc(task, 1, adat);
    if (res != ZLR_RES_OK) return res;
    (*adat)->task = task;
    res = ampl_calloc(task, 1, options);
    return res == ZLR_RES_OK ? ampl_make_options(task, *adat, *options) : res;
}

/* The stub's name and the keywords. AMPL_EXTENDED is read here: it decides what a failure from here on leaves. */
static int32_t read_arguments(transfer *t, ASL *asl, char **argv)
{
    const char *stub = getstub(&argv, t->options);
    if (stub == nullptr) return ZLR_RES_OK;
    std::strncpy(t->name, stub, name_bytes - 1);
    t->options->wantsol |= amplflag;
    const int bad = getopts(argv, t->options);
    ampl_take_extended(t->adat);
    if (bad == 0) return ZLR_RES_OK;
    if (t->adat->extended) ampl_note_bad_option(asl, t->options, argv, t->name, t->adat);
    return ZLR_RES_ERR_AMPL_STUB;
}

/* Looks through the stub, and keeps the matrix where that can be. What is wrong with it is kept for the .sol file. A stub that is
 * seen to be nonlinear is read but once, where the linear rows do not have to come from a read of another kind. */
static int32_t look_through(transfer *t, ASL *asl)
{
    char fault[stub_fault_bytes] = "";
    stub_facts facts = {};
    int32_t res = stub_check(t->task, t->name, &facts, &t->model.matrix, fault);
    t->model.linear_are_known = t->model.matrix.value != nullptr;
    t->model.nonlinear = facts.is_nonlinear && (t->model.linear_are_known || facts.num_con == 0);
    if (res == ZLR_RES_OK && facts.has_sets) res = ampl_refuse_sets(t->task, t->adat);
    if (res == ZLR_RES_ERR_AMPL_STUB && fault[0] != 0) {
        t->adat->fault = ZLR_strduptask(t->task, fault);
        res = t->adat->fault == nullptr ? ZLR_RES_ERR_SPACE : ampl_refuse(t->task, t->adat, t->adat->fault);
    }
    if (res == ZLR_RES_OK || res == ZLR_RES_ERR_FILE_READ) return res;
    ampl_name_stub(asl, t->name, facts.num_con, facts.num_var);
    return res;
}

static int32_t open_stub(transfer *t, ASL **stub, FILE **file)
{
    int32_t res = look_through(t, *stub);
    if (res != ZLR_RES_OK && res != ZLR_RES_ERR_FILE_READ) return res;
    if (t->model.nonlinear) ampl_replace_stub(t->adat, stub, t->options);
    ASL *asl = *stub;
    res = ampl_open_stub(asl, t->name, file, &t->model.matrix);
    if (res != ZLR_RES_OK) {
        ZLR_echotask(t->task, ZLR_STREAM_MSG, "** Fatal error: No AMPL stub: %s\n", t->name);
        return res;
    }
    if (*file != nullptr) return ZLR_RES_OK;
    ZLR_echotask(t->task, ZLR_STREAM_MSG, "** Fatal error: Could not read AMPL stub: %s\n", t->name);
    return ZLR_RES_ERR_FILE_READ;
}

/* Up to the sizes and suffixes of the model. */
static int32_t open_model(transfer *t, ASL **stub, char **argv, FILE **file)
{
    ASL *asl = *stub;
    return_nofile = 1;
    want_xpi0 = 7;
    int32_t res = read_arguments(t, asl, argv);
    if (res == ZLR_RES_OK && t->name[0] != 0) res = open_stub(t, stub, file);
    asl = *stub;
    if (res == ZLR_RES_OK) res = ampl_declare_suffixes(asl, t->adat, n_var, n_con, &t->suffixes);
    if (res != ZLR_RES_OK) return res;
    t->cone = suf_get("cone", ASL_Sufkind_var);
    res = ZLR_getdouparam(t->task, ZLR_DPAR_BOUND_INFINITE, &t->infinite);
    if (res == ZLR_RES_OK) res = ampl_calloc(t->task, n_con, &t->conkey);
    if (res == ZLR_RES_OK) res = ampl_calloc(t->task, n_var, &t->varkey);
    if (res == ZLR_RES_OK) res = ZLR_getdouparam(t->task, ZLR_DPAR_DATA_TOL_COEF, &t->droptol);
    return res;
}

/* The tests are strict: a bound of the size of the infinity counts as infinite. */
static int32_t bound_key(double infinite, double lower, double upper)
{
    if (lower > -infinite) {
        if (lower == upper) return ZLR_BK_FX;
        return upper < infinite ? ZLR_BK_RA : ZLR_BK_LO;
    }
    if (upper < infinite) return lower == upper ? ZLR_BK_FX : ZLR_BK_UP;
    return ZLR_BK_FR;
}

static int32_t put_sizes(transfer *t, ASL *asl)
{
    const int64_t num_nz = n_con > 0 && n_var > 0 ? t->model.matrix.colstart[n_var] : 0;
    int32_t res = ZLR_putmaxnumcon(t->task, n_con);
    if (res == ZLR_RES_OK) res = ZLR_putmaxnumvar(t->task, n_var);
    if (res == ZLR_RES_OK) res = ZLR_putmaxnumanz(t->task, num_nz);
    if (res == ZLR_RES_OK) res = ZLR_appendcons(t->task, n_con);
    if (res == ZLR_RES_OK) res = ZLR_appendvars(t->task, n_var);
    return res;
}

/* Bounds go as the stub gave them, infinite ones too. */
static int32_t put_linear(transfer *t, ASL *asl)
{
    const stub_model *m = &t->model;
    int32_t res = ZLR_putcfix(t->task, m->cfix);
    for (int32_t j = 0; j < n_var && res == ZLR_RES_OK; ++j) res = ZLR_putclist(t->task, 1, &j, &m->c[j]);
    for (int32_t i = 0; i < n_con && res == ZLR_RES_OK; ++i)
        res = ZLR_putconbound(t->task, i, t->conkey[i], m->conlower[i], m->conupper[i]);
    for (int32_t j = 0; j < n_var && res == ZLR_RES_OK; ++j)
        res = ZLR_putvarbound(t->task, j, t->varkey[j], m->varlower[j], m->varupper[j]);
    if (n_con == 0) return res;
    for (int32_t j = 0; j < n_var && res == ZLR_RES_OK; ++j) {
        const int32_t begin = m->matrix.colstart[j];
        res = ZLR_putacol(t->task, j, m->matrix.colstart[j + 1] - begin, m->row + begin, m->matrix.value + begin);
    }
    return res;
}

static int32_t mark_run(ZLR_task *task, int32_t begin, int32_t end)
{
    int32_t res = ZLR_RES_OK;
    for (int32_t j = begin; j < end && res == ZLR_RES_OK; ++j) res = ZLR_putvartype(task, j, ZLR_VAR_INT);
    return res;
}

/* The two runs mark nbv + niv columns together. The signs of the second start are kept as they are: models that mix
 * nonlinear and linear integer columns are known by the answers that come of it, and AMPL_EXTENDED marks exactly. */
static int32_t mark_integers(ZLR_task *task, ASL *asl)
{
    const int32_t nlmax = ampl_nonlinear_columns(asl);
    const int32_t num_nonlinear = nlvoi + nlvci + nlvbi;
    const int32_t res = mark_run(task, nlmax - num_nonlinear, nlmax);
    return res == ZLR_RES_OK ? mark_run(task, n_var - nbv - niv + num_nonlinear, n_var) : res;
}

static int32_t put_model(transfer *t, ASL *asl)
{
    stub_model *m = &t->model;
    int32_t res = m->maximise ? ZLR_putobjsense(t->task, ZLR_SENSE_MAX) : ZLR_RES_OK;
    for (int32_t j = 0; j < n_var; ++j) t->varkey[j] = bound_key(t->infinite, m->varlower[j], m->varupper[j]);
    for (int32_t i = 0; i < n_con; ++i) t->conkey[i] = bound_key(t->infinite, m->conlower[i], m->conupper[i]);
    if (res == ZLR_RES_OK) res = put_sizes(t, asl);
    if (res == ZLR_RES_OK) res = ampl_put_names(t->task, asl, t->objno);
    if (res == ZLR_RES_OK) res = put_linear(t, asl);
    if (res == ZLR_RES_OK) res = ZLR_amplputcones(t->task, n_var, t->cone);
    if (res != ZLR_RES_OK) return res;
    return t->adat->extended ? ampl_mark_integers(t->task, asl) : mark_integers(t->task, asl);
}

/* Keeps the lower triangle of one quadratic part, in place. */
static int32_t keep_lower_triangle(stub_model *m, int32_t k)
{
    int32_t kept = 0;
    for (int32_t p = 0; p < m->qnz[k]; ++p) {
        if (m->qsubj[k][p] > m->qsubi[k][p]) continue;
        m->qsubi[k][kept] = m->qsubi[k][p];
        m->qsubj[k][kept] = m->qsubj[k][p];
        m->qval[k][kept] = m->qval[k][p];
        ++kept;
    }
    m->qnz[k] = kept;
    return kept;
}

/* The walk over the rows does not stop at an error: the last row's code stands, kept. */
static int32_t put_quadratic(transfer *t, ASL *asl)
{
    stub_model *m = &t->model;
    if (nlc == 0 && t->objno >= nlo) return ZLR_RES_OK;
    int64_t num = 0;
    for (int32_t k = 0; k <= nlc; ++k) num += keep_lower_triangle(m, k);
    (void)ZLR_putmaxnumqnz(t->task, num);
    int32_t res = ZLR_putqobj(t->task, m->qnz[0], m->qsubi[0], m->qsubj[0], m->qval[0]);
    if (res != ZLR_RES_OK) return res;
    for (int32_t i = 0; i < nlc; ++i)
        res = ZLR_putqconk(t->task, i, m->qnz[i + 1], m->qsubi[i + 1], m->qsubj[i + 1], m->qval[i + 1]);
    return res;
}

/* From the sizes on: everything that can fail, with the code that goes on to the start and the release. The start is that
 * of the stub object then in force. */
static int32_t transfer_model(transfer *t, ASL **stub, FILE **file)
{
    int32_t res = ZLR_amplreadmodel(t->task, t->droptol, 1e16, *stub, file, t->objno, t->adat, &t->model);
    if (res == ZLR_RES_OK) res = put_model(t, *stub);
    if (res == ZLR_RES_OK)
        res = t->model.nonlinear ? ampl_put_nonlinear(t->adat, stub, t->options, t->name, &t->suffixes)
                                 : put_quadratic(t, *stub);
    const ASL *asl = *stub;
    if (t->adat->extended && res == ZLR_RES_OK && (X0 != nullptr || pi0 != nullptr))
        ZLR_echotask(t->task, ZLR_STREAM_MSG, "\nThe start that the stub gives, before any solve:\n");
    ZLR_amplwarmstart(&res, t->task, *stub, t->suffixes.constatus, t->suffixes.varstatus, t->suffixes.status + n_var,
                      t->suffixes.status);
    return res;
}

/* The stub object stays, the arrays that were lent to it for the read do not. */
static void take_arrays_back(ASL *asl, const stub_model *model)
{
    if (LUv == model->varlower) LUv = Uvx = nullptr;
    if (LUrhs == model->conlower) LUrhs = Urhsx = nullptr;
    A_vals = nullptr;
}

int32_t ZLR_amplin(char **argv, ASL **stub, Option_Info **options, int32_t objno, ZLR_task *task, ampl_data **adat)
{
    transfer t = {};
    FILE *file = nullptr;
    t.task = task;
    t.objno = objno;
    int32_t res = ZLR_getstrparamal(task, ZLR_SPAR_DATA_FILE, name_bytes, &t.name);
    if (res != ZLR_RES_OK) return res;
    t.name[0] = 0; /* only the buffer is wanted */
    *stub = ASL_alloc(ASL_read_fg);
    res = make_records(task, adat, options);
    t.adat = *adat;
    t.options = *options;
    if (res == ZLR_RES_OK) res = open_model(&t, stub, argv, &file);
    if (res == ZLR_RES_OK) res = transfer_model(&t, stub, &file);

    if (file != nullptr) (void)std::fclose(file); /* a failure came before the read, which closes it */
    take_arrays_back(*stub, &t.model);
    stub_model_free(task, &t.model);
    ampl_free(task, &t.varkey);
    ampl_free(task, &t.conkey);
    ampl_free(task, &t.name);
    return res;
}
