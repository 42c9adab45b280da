/* reader_fuzz.h - what a run of the fuzzer on a reader is: any bytes give a code, and a model that was read without an
 * error keeps to what model.h promises and can be written again. */
#pragma once

#include "solver/io/io.h"
#include "support/sys.h"

#include <cmath>
#include <cstdlib>

inline void fuzz_require(bool holds)
{
    if (!holds) std::abort();
}

inline void fuzz_check_terms(const model *m, const std::vector<quad_term> &terms)
{
    for (const quad_term &t : terms)
        fuzz_require(t.j >= 0 && t.j <= t.i && t.i < m->num_var && std::isfinite(t.value) && t.value != 0.0);
}

inline void fuzz_check_cones(const model *m)
{
    std::vector<char> is_member(static_cast<size_t>(m->num_var), 0);
    for (const model_cone &cone : m->cones) {
        fuzz_require(cone.type == ZLR_CT_QUAD || cone.type == ZLR_CT_RQUAD);
        fuzz_require(cone.member.size() > cone_num_heads(cone.type));
        for (const int32_t j : cone.member) {
            fuzz_require(j >= 0 && j < m->num_var && is_member[static_cast<size_t>(j)] == 0);
            is_member[static_cast<size_t>(j)] = 1;
        }
    }
}

inline void fuzz_check_model(const model *m)
{
    const auto num_con = static_cast<size_t>(m->num_con);
    const auto num_var = static_cast<size_t>(m->num_var);
    fuzz_require(m->con_lower.size() == num_con && m->con_upper.size() == num_con);
    fuzz_require(m->var_lower.size() == num_var && m->var_upper.size() == num_var && m->c.size() == num_var);
    fuzz_require(m->con_names.start.size() == num_con && m->var_names.start.size() == num_var);
    fuzz_require(m->a.start.size() == num_var + 1 && m->a.start[0] == 0 && std::isfinite(m->cfix));
    fuzz_require(static_cast<size_t>(m->a.start.back()) == m->a.row.size() && m->a.row.size() == m->a.value.size());

    std::vector<int32_t> mark(num_con, -1);
    for (int32_t j = 0; j < m->num_var; ++j)
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]);
             k < static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]); ++k) {
            const int32_t i = m->a.row[k];
            fuzz_require(i >= 0 && i < m->num_con && mark[static_cast<size_t>(i)] != j);
            fuzz_require(std::isfinite(m->a.value[k]) && m->a.value[k] != 0.0);
            mark[static_cast<size_t>(i)] = j;
        }
    for (size_t i = 0; i < num_con; ++i) fuzz_require(!std::isnan(m->con_lower[i]) && !std::isnan(m->con_upper[i]));
    for (size_t j = 0; j < num_var; ++j) fuzz_require(!std::isnan(m->var_lower[j]) && !std::isnan(m->var_upper[j]));
    fuzz_check_terms(m, m->qobj);
    for (const quad_row &q : m->qcon) {
        fuzz_require(q.row >= 0 && q.row < m->num_con && !q.terms.empty());
        fuzz_check_terms(m, q.terms);
    }
    fuzz_check_cones(m);
}

/* Reads bytes in a format and, if that goes well, writes the model in the same. Returns the reader's code. */
inline int32_t fuzz_reader(format_read_func read, format_write_func write, const void *data, size_t size)
{
    static const param_set params = [] {
        param_set set;
        param_set_defaults(&set);
        return set;
    }();
    stream_set streams;
    const io_context io = {"fuzz", &params, &streams, test_sys()};
    model m;
    byte_source *in = nullptr;
    int32_t res = source_open_memory(&in, static_cast<const char *>(data), size);
    if (res == ZLR_RES_OK) res = read(&io, in, &m);
    source_close(&in);
    if (res != ZLR_RES_OK) return res;

    fuzz_check_model(&m);
    byte_sink *out = nullptr;
    fuzz_require(sink_open(test_sys(), &out, "/dev/null", {}) == ZLR_RES_OK);
    fuzz_require(write(&io, out, &m) == ZLR_RES_OK);
    fuzz_require(sink_close(&out, true) == ZLR_RES_OK);
    return ZLR_RES_OK;
}
