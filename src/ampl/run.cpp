/* run.cpp - see ampl.h: one AMPL job from stub to answer. */
// First: a parameter there has the name of a macro.
#include "zelor/ampl_entry.h"

#include "ampl/ampl.h"

void ZLR_amplfree(ASL **stub, Option_Info **options, ampl_data **adat)
{
    ampl_data *a = *adat;
    if (a != nullptr) ampl_free_options(a->task, options);
    ASL_free(stub);
    if (a == nullptr) return;
    ZLR_task *task = a->task;
    for (const int32_t stream : {ZLR_STREAM_MSG, ZLR_STREAM_ERR, ZLR_STREAM_WRN})
        (void)ZLR_linkfunctotaskstream(task, stream, nullptr, nullptr);
    ampl_free_sensitivity(a);
    ampl_free(task, &a->fault);
    ampl_free(task, &a->ow);
    ampl_free(task, &a->y);
    ampl_free(task, &a->work);
    ampl_free(task, adat);
}

/* Sensitivity is for linear problems without integer columns alone; elsewhere the wish is dropped without a word. */
static int32_t analyse(ZLR_task *task, int32_t result, ampl_data *adat)
{
    int32_t type = 0;
    int32_t num_int = 0;
    if (result == ZLR_RES_OK) result = ZLR_getprobtype(task, &type);
    if (result == ZLR_RES_OK) result = ZLR_getnumintvar(task, &num_int);
    if (adat->sensitivity && result == ZLR_RES_OK && type == ZLR_PROBTYPE_LO && num_int == 0)
        return ampl_analyse_sensitivity(adat);
    adat->sensitivity = 0;
    return result;
}

/* The basic solution, else the integer one, else the interior one, which need not exist. */
static int32_t choose_kind(ZLR_task *task)
{
    int32_t defined = 0;
    for (const int32_t kind : {ZLR_SOL_BAS, ZLR_SOL_ITG})
        if (ZLR_solutiondef(task, kind, &defined) == ZLR_RES_OK && defined) return kind;
    return ZLR_SOL_ITR;
}

static int32_t run_job(ZLR_task *task, int32_t optimize, ASL **stub, Option_Info **options, ampl_data **adat,
                       int32_t *code)
{
    ZLR_echotask(task, ZLR_STREAM_MSG, "\n");
    int32_t res = optimize ? ZLR_optimize(task) : ZLR_RES_OK;
    res = analyse(task, res, *adat);
    const int32_t kind = choose_kind(task);
    if (optimize) (void)ZLR_amplout(*stub, *options, res, kind, *adat, code);
    ZLR_amplfree(stub, options, adat);
    return res;
}

int32_t ZLR_amplrun(char **argv, ZLR_task *task, int32_t optimize, int32_t *code)
{
    ASL *stub = nullptr;
    Option_Info *options = nullptr;
    ampl_data *adat = nullptr;
    int32_t log_level = 0;
    (void)ZLR_getintparam(task, ZLR_IPAR_LOG_LEVEL, &log_level);
    (void)ZLR_putintparam(task, ZLR_IPAR_LOG_LEVEL, 0); /* filling the task prints nothing */

    int32_t res = ZLR_amplin(argv, &stub, &options, 0, task, &adat);
    if (res == ZLR_RES_OK && stub != nullptr) {
        res = run_job(task, optimize, &stub, &options, &adat, code);
    } else if (adat != nullptr && adat->extended && stub != nullptr) {
        if (optimize) ampl_report_failure(stub, options, res, adat, code);
        ZLR_amplfree(&stub, &options, &adat);
    }
    (void)ZLR_putintparam(task, ZLR_IPAR_LOG_LEVEL, log_level);
    return res;
}
