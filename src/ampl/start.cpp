/* start.cpp - see ampl.h: what AMPL sends to start from becomes a solution of the task. */
#include "ampl/ampl.h"

/* Not the inverse of the keys' way out: 6 goes in as 2, where 2 had come out as 6. */
static int32_t key_of(int status) { return status >= 0 && status <= ZLR_SK_FIXED ? status : ZLR_SK_SUPBAS; }

/* The start of the rows or the columns: keys and values, and whether there are values. */
struct start_part {
    int32_t num;
    int32_t *key;
    double *value;
    bool has_values;
};

static int32_t make_part(ZLR_task *task, int32_t num, start_part *part)
{
    part->num = num;
    const int32_t res = ampl_calloc(task, num, &part->value);
    return res == ZLR_RES_OK ? ampl_calloc(task, num, &part->key) : res;
}

static void fill_part(start_part *part, const double *value, bool takes_keys, const int *status)
{
    part->has_values = value != nullptr && part->num > 0;
    for (int32_t k = 0; k < part->num; ++k) {
        if (value != nullptr) part->value[k] = value[k];
        part->key[k] = takes_keys ? key_of(status[k]) : ZLR_SK_UNDEF;
    }
}

static int32_t start_kind(ZLR_task *task, int32_t *kind)
{
    int32_t num_cone = 0;
    int32_t num_int = 0;
    int32_t type = 0;
    int32_t res = ZLR_getnumcone(task, &num_cone);
    if (res == ZLR_RES_OK) res = ZLR_getnumintvar(task, &num_int);
    if (res == ZLR_RES_OK) res = ZLR_getprobtype(task, &type);
    *kind = ZLR_SOL_ITR;
    if (type == ZLR_PROBTYPE_LO) *kind = ZLR_SOL_BAS;
    if (num_int > 0) *kind = ZLR_SOL_ITG;
    return res;
}

void ZLR_amplwarmstart(int32_t *result, ZLR_task *task, ASL *asl, const SufDesc *condesc, const SufDesc *vardesc,
                       const int *constatus, const int *varstatus)
{
    if (*result != ZLR_RES_OK) return;
    start_part con = {};
    start_part var = {};
    int32_t num_con = 0;
    int32_t num_var = 0;
    int32_t kind = 0;
    int32_t res = ZLR_getnumcon(task, &num_con);
    if (res == ZLR_RES_OK) res = ZLR_getnumvar(task, &num_var);
    if (res == ZLR_RES_OK) res = start_kind(task, &kind);
    if (res == ZLR_RES_OK) res = make_part(task, num_con, &con);
    if (res == ZLR_RES_OK) res = make_part(task, num_var, &var);
    if (res == ZLR_RES_OK) {
        /* The gates are crossed: statuses of columns let those of rows in, and the other way round. Kept, for models that
         * send both are not touched by it and those that send one start as they always have. */
        const bool takes_con = (vardesc->kind & ASL_Sufkind_input) != 0;
        const bool takes_var = (condesc->kind & ASL_Sufkind_input) != 0;
        fill_part(&con, pi0, takes_con, constatus);
        fill_part(&var, X0, takes_var, varstatus);
        if (takes_con || takes_var || con.has_values || var.has_values) {
            res = ZLR_putsolution(task, kind, con.key, var.key, nullptr, nullptr, var.has_values ? var.value : nullptr,
                                  con.has_values ? con.value : nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
            (void)ZLR_solutionsummary(task, ZLR_STREAM_MSG);
        }
    }
    *result = res;
    ampl_free(task, &var.key);
    ampl_free(task, &var.value);
    ampl_free(task, &con.key);
    ampl_free(task, &con.value);
}
