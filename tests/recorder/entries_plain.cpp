/* entries_plain.cpp - the entries that are recorded and answer with a code alone. Arrays show as "foreign", outputs are
 * left as they are. */
#include "recorder.h"

using i32 = int32_t;
using i64 = int64_t;

/* An array or another pointer of the caller's. */
static const void *pointer(const void *at) { return at; }

/* ---- Parameters ---- */

i32 ZLR_putdouparam(ZLR_task *task, i32 param, double value) { return answer("ZLR_putdouparam", task, param, value); }

i32 ZLR_putparam(ZLR_task *task, const char *name, const char *value)
{
    return answer("ZLR_putparam", task, name, value);
}

i32 ZLR_readparamfile(ZLR_task *task, const char *filename) { return answer("ZLR_readparamfile", task, filename); }
i32 ZLR_writeparamfile(ZLR_task *task, const char *filename) { return answer("ZLR_writeparamfile", task, filename); }

/* ---- The problem ---- */

i32 ZLR_putobjsense(ZLR_task *task, i32 sense) { return answer("ZLR_putobjsense", task, sense); }
i32 ZLR_getobjsense(ZLR_task *task, i32 *) { return answer("ZLR_getobjsense", task); }
i32 ZLR_putcfix(ZLR_task *task, double cfix) { return answer("ZLR_putcfix", task, cfix); }
i32 ZLR_puttaskname(ZLR_task *task, const char *name) { return answer("ZLR_puttaskname", task, name); }
i32 ZLR_putobjname(ZLR_task *task, const char *name) { return answer("ZLR_putobjname", task, name); }
i32 ZLR_putconname(ZLR_task *task, i32 i, const char *name) { return answer("ZLR_putconname", task, i, name); }
i32 ZLR_getconname(ZLR_task *task, i32 i, i32 capacity, char *) { return answer("ZLR_getconname", task, i, capacity); }
i32 ZLR_getnumanz(ZLR_task *task, i64 *) { return answer("ZLR_getnumanz", task); }

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

i32 ZLR_primalrepair(ZLR_task *task, const double *wlc, const double *wuc, const double *wlx, const double *wux)
{
    return answer("ZLR_primalrepair", task, pointer(wlc), pointer(wuc), pointer(wlx), pointer(wux));
}

i32 ZLR_startstat(ZLR_task *task) { return answer("ZLR_startstat", task); }
i32 ZLR_stopstat(ZLR_task *task) { return answer("ZLR_stopstat", task); }
i32 ZLR_appendstat(ZLR_task *task) { return answer("ZLR_appendstat", task); }
i32 ZLR_toconic(ZLR_task *task) { return answer("ZLR_toconic", task); }
