/* lp_support.h - for the tests of the LP format: texts read and written in memory, a model as one line, and the first
 * difference of two models. */
#pragma once

#include "solver/io/io.h"
#include "support/sys.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace lp_support
{
/* ---- reading from and writing to memory, with the messages caught */

struct heard {
    std::string errors, warnings;
};

inline void hear_error(void *handle, const char *text) { static_cast<heard *>(handle)->errors += text; }
inline void hear_warning(void *handle, const char *text) { static_cast<heard *>(handle)->warnings += text; }

struct session {
    heard messages;
    stream_set streams{};
    param_set params;
    io_context io;

    session()
    {
        param_set_defaults(&params);
        streams.out[ZLR_STREAM_ERR] = {hear_error, &messages, nullptr};
        streams.out[ZLR_STREAM_WRN] = {hear_warning, &messages, nullptr};
        io = {"t.lp", &params, &streams, test_sys()};
    }
};

inline int32_t read_text(session *s, std::string_view text, model *m)
{
    byte_source *in = nullptr;
    if (source_open(test_sys(), &in, "/dev/null") != ZLR_RES_OK) return -1;
    source_unread(in, text.data(), text.size());
    const int32_t res = lp_read(&s->io, in, m);
    source_close(&in);
    return res;
}

/* A folder of its own for one test. */
struct scratch {
    std::string path;

    scratch()
    {
        std::string made = (std::filesystem::temp_directory_path() / "zelor-lp-XXXXXX").string();
        if (mkdtemp(made.data()) != nullptr) path = made;
    }
    ~scratch() { std::filesystem::remove_all(path); }
    scratch(const scratch &) = delete;
    scratch &operator=(const scratch &) = delete;
};

inline std::string file_text(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline int32_t write_file(session *s, const model *m, const std::string &path)
{
    byte_sink *out = nullptr;
    if (sink_open(test_sys(), &out, path.c_str(), {}) != ZLR_RES_OK) return -1;
    const int32_t res = lp_write(&s->io, out, m);
    const int32_t closed = sink_close(&out, res == ZLR_RES_OK);
    return res != ZLR_RES_OK ? res : closed;
}

inline std::string written(session *s, const model *m)
{
    const scratch folder;
    const std::string path = folder.path + "/written.lp";
    EXPECT_EQ(write_file(s, m, path), ZLR_RES_OK);
    return file_text(path);
}

/* ---- a model in one line, and the difference of two */

inline std::string number(double value)
{
    char text[40];
    snprintf(text, sizeof text, "%.17g", value);
    return text;
}

inline std::string quad_text(const model *m, const std::vector<quad_term> &terms)
{
    std::string text;
    for (const quad_term &t : terms)
        text += " " + number(t.value) + "*" + std::string(names_get(&m->var_names, t.i)) + "*" +
                std::string(names_get(&m->var_names, t.j));
    return text;
}

inline std::string row_text(const model *m, int32_t row)
{
    const auto i = static_cast<size_t>(row);
    std::string text = std::string(names_get(&m->con_names, row)) + "[" + number(m->con_lower[i]) + "," +
                       number(m->con_upper[i]) + "]:";
    for (int32_t j = 0; j < m->num_var; j++)
        for (auto k = static_cast<size_t>(m->a.start[static_cast<size_t>(j)]);
             k < static_cast<size_t>(m->a.start[static_cast<size_t>(j) + 1]); k++)
            if (m->a.row[k] == row) text += " " + number(m->a.value[k]) + std::string(names_get(&m->var_names, j));
    for (const quad_row &q : m->qcon)
        if (q.row == row) text += quad_text(m, q.terms);
    return text;
}

/* "min 2x 1*x*x +5 | c1[-inf,3]: 1x | x[0,inf]i" */
inline std::string describe(const model *m)
{
    std::string text = m->sense == ZLR_SENSE_MAX ? "max" : "min";
    for (int32_t j = 0; j < m->num_var; j++)
        if (m->c[static_cast<size_t>(j)] != 0.0)
            text += " " + number(m->c[static_cast<size_t>(j)]) + std::string(names_get(&m->var_names, j));
    text += quad_text(m, m->qobj);
    if (m->cfix != 0.0) text += " +" + number(m->cfix);
    for (int32_t i = 0; i < m->num_con; i++) text += " | " + row_text(m, i);
    text += " |";
    for (int32_t col = 0; col < m->num_var; col++) {
        const auto j = static_cast<size_t>(col);
        text += " " + std::string(names_get(&m->var_names, col)) + "[" + number(m->var_lower[j]) + "," +
                number(m->var_upper[j]) + "]" + (m->var_type[j] == ZLR_VAR_INT ? "i" : "");
    }
    return text;
}

inline bool same_bits(const std::vector<double> &a, const std::vector<double> &b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

inline bool same_quad(const std::vector<quad_term> &a, const std::vector<quad_term> &b)
{
    if (a.size() != b.size()) return false;
    for (size_t k = 0; k < a.size(); k++)
        if (a[k].i != b[k].i || a[k].j != b[k].j || std::memcmp(&a[k].value, &b[k].value, sizeof(double)) != 0)
            return false;
    return true;
}

inline bool same_names(const name_table &a, const name_table &b, int32_t num)
{
    for (int32_t i = 0; i < num; i++)
        if (names_get(&a, i) != names_get(&b, i)) return false;
    return true;
}

/* The first part in which two models differ to the bit, or "". */
inline std::string difference(const model *a, const model *b, bool with_names)
{
    if (a->num_con != b->num_con || a->num_var != b->num_var) return "size";
    if (a->sense != b->sense || a->cfix != b->cfix || !same_bits(a->c, b->c)) return "objective";
    if (!same_bits(a->con_lower, b->con_lower) || !same_bits(a->con_upper, b->con_upper)) return "row bounds";
    if (!same_bits(a->var_lower, b->var_lower) || !same_bits(a->var_upper, b->var_upper)) return "column bounds";
    if (a->var_type != b->var_type) return "types";
    if (a->a.start != b->a.start || a->a.row != b->a.row || !same_bits(a->a.value, b->a.value)) return "matrix";
    if (!same_quad(a->qobj, b->qobj) || a->qcon.size() != b->qcon.size()) return "quadratic part";
    for (size_t k = 0; k < a->qcon.size(); k++)
        if (a->qcon[k].row != b->qcon[k].row || !same_quad(a->qcon[k].terms, b->qcon[k].terms)) return "quadratic row";
    if (with_names && !same_names(a->var_names, b->var_names, a->num_var)) return "column names";
    if (with_names && !same_names(a->con_names, b->con_names, a->num_con)) return "row names";
    return "";
}
}  // namespace lp_support
