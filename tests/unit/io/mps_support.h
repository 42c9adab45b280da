/* mps_support.h - what the tests of the byte layer and of MPS share: a folder of their own, reading from a text with the
 * messages caught, and a model as text, so that cases are tables of strings. */
#pragma once

#include "solver/io/io.h"
#include "solver/model/model.h"
#include "solver/params/params.h"
#include "support/sys.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace test_mps
{
/* A folder that goes with the record. */
struct temp_folder {
    std::string path;

    temp_folder()
    {
        char name[] = "/tmp/zelor-test-XXXXXX";
        path = mkdtemp(name);
    }
    ~temp_folder() { std::filesystem::remove_all(path); }
    temp_folder(const temp_folder &) = delete;
    temp_folder &operator=(const temp_folder &) = delete;

    std::string file(const std::string &name) const { return path + "/" + name; }
    size_t num_files() const
    {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(path), {}));
    }
};

inline std::string file_text(const std::string &name)
{
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void put_file(const std::string &name, const std::string &text)
{
    std::ofstream(name, std::ios::binary) << text;
}

/* A context with every parameter at its default and all messages in `log`. */
struct caught_io {
    param_set params;
    stream_set streams;
    io_context io;
    std::string log;
    std::string name;

    explicit caught_io(std::string file = "t.mps") : name(std::move(file))
    {
        param_set_defaults(&params);
        streams.out[ZLR_STREAM_LOG].handle = &log;
        streams.out[ZLR_STREAM_LOG].func = [](void *handle, const char *text) {
            *static_cast<std::string *>(handle) += text;
        };
        io = {name.c_str(), &params, &streams, test_sys()};
    }
    caught_io(const caught_io &) = delete;
    caught_io &operator=(const caught_io &) = delete;
};

inline int32_t read_text(caught_io *context, const std::string &text, model *m, format_read_func reader = mps_read)
{
    byte_source *in = nullptr;
    const int32_t res = source_open_memory(&in, text.data(), text.size());
    EXPECT_EQ(res, ZLR_RES_OK);
    const int32_t read = reader(&context->io, in, m);
    source_close(&in);
    return read;
}

inline std::string number(double value) { return text_format("%.17g", value); }

/* "min 1 | a:N [-inf,inf] | x [0,inf] 2 a:3": objective, rows, columns with cost and entries, quadratic terms. */
inline std::string shown(const model &m)
{
    std::string text = (m.sense == ZLR_SENSE_MAX ? "max " : "min ") + number(m.cfix);
    for (int32_t i = 0; i < m.num_con; ++i) {
        const auto at = static_cast<size_t>(i);
        text += " | " + names_shown(&m.con_names, i, 'c') + " [" + number(m.con_lower[at]) + "," +
                number(m.con_upper[at]) + "]";
    }
    for (int32_t j = 0; j < m.num_var; ++j) {
        const auto at = static_cast<size_t>(j);
        text += std::string(" | ") + (m.var_type[at] == ZLR_VAR_INT ? "int " : "") + names_shown(&m.var_names, j, 'x');
        text += " [" + number(m.var_lower[at]) + "," + number(m.var_upper[at]) + "] " + number(m.c[at]);
        for (auto k = static_cast<size_t>(m.a.start[at]); k < static_cast<size_t>(m.a.start[at + 1]); ++k)
            text += " " + names_shown(&m.con_names, m.a.row[k], 'c') + ":" + number(m.a.value[k]);
    }
    for (const quad_term &t : m.qobj) text += text_format(" | q%d,%d:%.17g", t.i, t.j, t.value);
    for (const quad_row &q : m.qcon)
        for (const quad_term &t : q.terms) text += text_format(" | q%d:%d,%d:%.17g", q.row, t.i, t.j, t.value);
    for (const model_cone &cone : m.cones) {
        text += cone.type == ZLR_CT_QUAD ? " | Q" : " | QR";
        for (const int32_t j : cone.member) text += " " + names_shown(&m.var_names, j, 'x');
    }
    return text;
}

inline std::vector<std::string> names_of(const name_table &table, int32_t num)
{
    std::vector<std::string> names;
    for (int32_t i = 0; i < num; ++i) names.emplace_back(names_get(&table, i));
    return names;
}

inline bool same_bits(const std::vector<double> &a, const std::vector<double> &b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

inline bool same_terms(const std::vector<quad_term> &a, const std::vector<quad_term> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const quad_term &x, const quad_term &y) {
        return x.i == y.i && x.j == y.j && x.value == y.value;
    });
}

inline bool same_cones(const model &a, const model &b)
{
    return std::equal(
        a.cones.begin(), a.cones.end(), b.cones.begin(), b.cones.end(),
        [](const model_cone &x, const model_cone &y) { return x.type == y.type && x.member == y.member; });
}

/* Every number bit by bit, and every name. */
inline void expect_same(const model &a, const model &b)
{
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.sense, b.sense);
    EXPECT_EQ(a.cfix, b.cfix);
    ASSERT_EQ(a.num_con, b.num_con);
    ASSERT_EQ(a.num_var, b.num_var);
    EXPECT_TRUE(same_bits(a.c, b.c));
    EXPECT_TRUE(same_bits(a.con_lower, b.con_lower));
    EXPECT_TRUE(same_bits(a.con_upper, b.con_upper));
    EXPECT_TRUE(same_bits(a.var_lower, b.var_lower));
    EXPECT_TRUE(same_bits(a.var_upper, b.var_upper));
    EXPECT_EQ(a.var_type, b.var_type);
    EXPECT_EQ(a.a.start, b.a.start);
    EXPECT_EQ(a.a.row, b.a.row);
    EXPECT_TRUE(same_bits(a.a.value, b.a.value));
    EXPECT_EQ(names_of(a.con_names, a.num_con), names_of(b.con_names, b.num_con));
    EXPECT_EQ(names_of(a.var_names, a.num_var), names_of(b.var_names, b.num_var));
    EXPECT_TRUE(same_terms(a.qobj, b.qobj));
    ASSERT_EQ(a.qcon.size(), b.qcon.size());
    for (size_t k = 0; k < a.qcon.size(); ++k) {
        EXPECT_EQ(a.qcon[k].row, b.qcon[k].row);
        EXPECT_TRUE(same_terms(a.qcon[k].terms, b.qcon[k].terms));
    }
    EXPECT_TRUE(same_cones(a, b));
}
}  // namespace test_mps
