/* entries_plain.cpp - the entries that are recorded and answer with a code alone. Arrays show as "foreign", outputs are
 * left as they are. */
#include "recorder.h"

using i32 = int32_t;
using i64 = int64_t;

/* An array or another pointer of the caller's. */
static const void *pointer(const void *at) { return at; }

/* ---- Parameters ---- */

i32 ZLR_putdouparam(ZLR_task *task, i32 param, double value) { return answer("ZLR_putdouparam", task, param, value); }
i32 ZLR_putintparam(ZLR_task *task, i32 param, i32 value) { return answer("ZLR_putintparam", task, param, value); }
i32 ZLR_getdouparam(ZLR_task *task, i32 param, double *) { return answer("ZLR_getdouparam", task, param); }

i32 ZLR_putparam(ZLR_task *task, const char *name, const char *value)
{
    return answer("ZLR_putparam", task, name, value);
}

i32 ZLR_getparamname(ZLR_task *task, i32 param_class, i32 param, char *)
{
    return answer("ZLR_getparamname", task, param_class, param);
}

i32 ZLR_readparamfile(ZLR_task *task, const char *filename) { return answer("ZLR_readparamfile", task, filename); }
i32 ZLR_writeparamfile(ZLR_task *task, const char *filename) { return answer("ZLR_writeparamfile", task, filename); }

/* ---- The problem ---- */

i32 ZLR_putmaxnumcon(ZLR_task *task, i32 num) { return answer("ZLR_putmaxnumcon", task, num); }
i32 ZLR_putmaxnumvar(ZLR_task *task, i32 num) { return answer("ZLR_putmaxnumvar", task, num); }
i32 ZLR_putmaxnumanz(ZLR_task *task, i64 num) { return answer("ZLR_putmaxnumanz", task, num); }
i32 ZLR_putmaxnumqnz(ZLR_task *task, i64 num) { return answer("ZLR_putmaxnumqnz", task, num); }
i32 ZLR_appendcons(ZLR_task *task, i32 num) { return answer("ZLR_appendcons", task, num); }
i32 ZLR_appendvars(ZLR_task *task, i32 num) { return answer("ZLR_appendvars", task, num); }

i32 ZLR_putconbound(ZLR_task *task, i32 i, i32 key, double lower, double upper)
{
    return answer("ZLR_putconbound", task, i, key, lower, upper);
}

i32 ZLR_putvarbound(ZLR_task *task, i32 j, i32 key, double lower, double upper)
{
    return answer("ZLR_putvarbound", task, j, key, lower, upper);
}

i32 ZLR_getbound(ZLR_task *task, i32 accessor, i32 index, i32 *, double *, double *)
{
    return answer("ZLR_getbound", task, accessor, index);
}

i32 ZLR_putobjsense(ZLR_task *task, i32 sense) { return answer("ZLR_putobjsense", task, sense); }
i32 ZLR_getobjsense(ZLR_task *task, i32 *) { return answer("ZLR_getobjsense", task); }
i32 ZLR_putcfix(ZLR_task *task, double cfix) { return answer("ZLR_putcfix", task, cfix); }
i32 ZLR_getc(ZLR_task *task, double *) { return answer("ZLR_getc", task); }

i32 ZLR_putclist(ZLR_task *task, i32 num, const i32 *sub, const double *value)
{
    return answer("ZLR_putclist", task, num, pointer(sub), pointer(value));
}

i32 ZLR_putqobj(ZLR_task *task, i32 num, const i32 *subi, const i32 *subj, const double *value)
{
    return answer("ZLR_putqobj", task, num, pointer(subi), pointer(subj), pointer(value));
}

i32 ZLR_putqconk(ZLR_task *task, i32 i, i32 num, const i32 *subi, const i32 *subj, const double *value)
{
    return answer("ZLR_putqconk", task, i, num, pointer(subi), pointer(subj), pointer(value));
}

i32 ZLR_putacol(ZLR_task *task, i32 j, i32 num, const i32 *sub, const double *value)
{
    return answer("ZLR_putacol", task, j, num, pointer(sub), pointer(value));
}

i32 ZLR_putvartype(ZLR_task *task, i32 j, i32 type) { return answer("ZLR_putvartype", task, j, type); }
i32 ZLR_puttaskname(ZLR_task *task, const char *name) { return answer("ZLR_puttaskname", task, name); }
i32 ZLR_putobjname(ZLR_task *task, const char *name) { return answer("ZLR_putobjname", task, name); }
i32 ZLR_putconname(ZLR_task *task, i32 i, const char *name) { return answer("ZLR_putconname", task, i, name); }
i32 ZLR_putvarname(ZLR_task *task, i32 j, const char *name) { return answer("ZLR_putvarname", task, j, name); }
i32 ZLR_getconname(ZLR_task *task, i32 i, i32 capacity, char *) { return answer("ZLR_getconname", task, i, capacity); }
i32 ZLR_getvarname(ZLR_task *task, i32 j, i32 capacity, char *) { return answer("ZLR_getvarname", task, j, capacity); }
i32 ZLR_getnumanz(ZLR_task *task, i64 *) { return answer("ZLR_getnumanz", task); }
i32 ZLR_getnumintvar(ZLR_task *task, i32 *) { return answer("ZLR_getnumintvar", task); }
i32 ZLR_getprobtype(ZLR_task *task, i32 *) { return answer("ZLR_getprobtype", task); }

/* ---- Files, solutions, analyses ---- */

i32 ZLR_readdata(ZLR_task *task, const char *filename) { return answer("ZLR_readdata", task, filename); }
i32 ZLR_writedata(ZLR_task *task, const char *filename) { return answer("ZLR_writedata", task, filename); }

i32 ZLR_readsolution(ZLR_task *task, i32 kind, const char *filename)
{
    return answer("ZLR_readsolution", task, kind, filename);
}

i32 ZLR_writesolution(ZLR_task *task, i32 kind, const char *filename)
{
    return answer("ZLR_writesolution", task, kind, filename);
}

i32 ZLR_prostatostr(ZLR_task *task, i32 prosta, char *) { return answer("ZLR_prostatostr", task, prosta); }
i32 ZLR_solstatostr(ZLR_task *task, i32 solsta, char *) { return answer("ZLR_solstatostr", task, solsta); }
i32 ZLR_getprimalobj(ZLR_task *task, i32 kind, double *) { return answer("ZLR_getprimalobj", task, kind); }
i32 ZLR_getdualobj(ZLR_task *task, i32 kind, double *) { return answer("ZLR_getdualobj", task, kind); }

i32 ZLR_getsolution(ZLR_task *task, i32 kind, i32 *, i32 *, i32 *, i32 *, i32 *, double *, double *, double *, double *,
                    double *, double *, double *, double *)
{
    return answer("ZLR_getsolution", task, kind);
}

i32 ZLR_putsolution(ZLR_task *task, i32 kind, const i32 *, const i32 *, const i32 *, const double *, const double *,
                    const double *, const double *, const double *, const double *, const double *, const double *)
{
    return answer("ZLR_putsolution", task, kind);
}

i32 ZLR_primalrepair(ZLR_task *task, const double *wlc, const double *wuc, const double *wlx, const double *wux)
{
    return answer("ZLR_primalrepair", task, pointer(wlc), pointer(wuc), pointer(wlx), pointer(wux));
}

i32 ZLR_startstat(ZLR_task *task) { return answer("ZLR_startstat", task); }
i32 ZLR_stopstat(ZLR_task *task) { return answer("ZLR_stopstat", task); }
i32 ZLR_appendstat(ZLR_task *task) { return answer("ZLR_appendstat", task); }
i32 ZLR_toconic(ZLR_task *task) { return answer("ZLR_toconic", task); }

i32 ZLR_putnlfunc(ZLR_task *task, void *handle, ZLR_nlgetspfunc_t, ZLR_nlgetvafunc_t)
{
    return answer("ZLR_putnlfunc", task, pointer(handle));
}
