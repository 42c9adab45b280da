/* verdicts.cpp - see verdicts.h. */
#include "ampl/evaluation/verdicts.h"

#include <vector>

#include "ampl/stub_check.h"

// Last: its macros must not meet the standard headers.
#include "ampl/ampl.h"

/* There with the leak sanitizer alone. Where the library's test follows a null pointer, and is brought back from there, it has
 * some memory in hand that nobody knows of. */
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

static bool is_not_quadratic(ASL *asl, int32_t co)
{
    fint *row = nullptr;
    fint *start = nullptr;
    real *value = nullptr;
    if (__lsan_disable != nullptr) __lsan_disable();
    const bool is_not = ampl_quadratic_part(asl, co, &row, &start, &value) < 0;
    if (__lsan_enable != nullptr) __lsan_enable();
    return is_not;
}

verdict_task::verdict_task()
{
    (void)ZLR_makeenv(&env, nullptr);
    (void)ZLR_makeemptytask(env, &task);
}

verdict_task::~verdict_task()
{
    (void)ZLR_deletetask(&task);
    (void)ZLR_deleteenv(&env);
}

static bool judge_by_library(const std::string &stub, bool is_row, bool *is_nonlinear)
{
    ampl_data job = {};
    ASL *asl = ASL_alloc(ASL_read_fg);
    FILE *file = nullptr;
    return_nofile = 1;
    bool is_read = ampl_open_stub(asl, stub.c_str(), &file) == ZLR_RES_OK && file != nullptr;
    std::vector<double> lower(is_read ? static_cast<size_t>(n_con) + 1 : 0);
    std::vector<double> upper(lower);
    LUrhs = lower.data(); /* constants of rows are moved into these */
    Urhsx = upper.data();
    is_read = is_read && ampl_read_stub(asl, file, &job) == ZLR_RES_OK;
    if (is_read) *is_nonlinear = is_not_quadratic(asl, is_row ? -1 : 0);
    ASL_free(&asl);
    return is_read;
}

verdicts judge_function(const verdict_task &where, const std::string &stub, bool is_row)
{
    verdicts v;
    char fault[stub_fault_bytes] = "";
    stub_facts facts = {};
    stub_matrix matrix = {};
    v.is_read = stub_check(where.task, stub.c_str(), &facts, &matrix, fault) == ZLR_RES_OK;
    stub_matrix_free(where.task, &matrix);
    v.by_look = facts.is_nonlinear;
    if (v.by_look) v.is_read = v.is_read && judge_by_library(stub, is_row, &v.by_library);
    return v;
}
