/* CBF files of others: sizes as the list of the files gives them, and the round trip through our writer. */
#include "mps_support.h"

#include <cmath>
#include <random>
#include <sstream>

using namespace test_mps;

namespace
{
struct listed_file {
    std::string path, kind;
    int64_t rows, columns, nonzeros;
};

std::vector<listed_file> listed_files()
{
    std::vector<listed_file> files;
    std::ifstream list(ZELOR_DATA_DIR "/MANIFEST.tsv");
    for (std::string line; std::getline(list, line);) {
        listed_file file = {};
        std::stringstream in(line);
        std::getline(in, file.path, '\t');
        std::getline(in, file.kind, '\t');
        in >> file.rows >> file.columns >> file.nonzeros;
        if (file.path.ends_with(".cbf") || file.path.ends_with(".cbf.gz")) files.push_back(file);
    }
    return files;
}

int32_t read_file(caught_io *context, model *m)
{
    int32_t format = -1;
    const int32_t res = problem_read(&context->io, m, &format);
    EXPECT_EQ(format_table[format].read, cbf_read);
    return res;
}

int64_t num_slacks(const model &m)
{
    int64_t num = 0;
    for (int32_t j = 0; j < m.num_var; j++) num += names_get(&m.var_names, j).ends_with("_cone") ? 1 : 0;
    return num;
}

TEST(CbfFiles, SizesAsListed)
{
    const std::vector<listed_file> files = listed_files();
    if (files.empty()) GTEST_SKIP() << "no problem files";
    for (const listed_file &file : files) {
        SCOPED_TRACE(file.path);
        caught_io context(std::string(ZELOR_DATA_DIR "/") + file.path);
        model m;
        const int32_t res = read_file(&context, &m);
        if (file.kind == "BAD") {
            EXPECT_TRUE(res == ZLR_RES_ERR_FILE_FORMAT || res == ZLR_RES_ERR_FILE_UNSUPPORTED) << res;
            EXPECT_EQ(std::count(context.log.begin(), context.log.end(), '\n'), 1) << context.log;
            continue;
        }
        EXPECT_EQ(res, ZLR_RES_OK);
        EXPECT_EQ(context.log, "");
        EXPECT_EQ(m.num_con, file.rows);
        EXPECT_EQ(m.num_var - num_slacks(m), file.columns);
        EXPECT_EQ(model_num_nz(&m) - num_slacks(m), file.nonzeros);
        EXPECT_EQ(model_num_int(&m) > 0, file.kind == "MISOCP");
        EXPECT_EQ(model_problem_type(&m), ZLR_PROBTYPE_CONIC);
    }
}

/* What was read from a CBF file has nothing that CBF cannot hold, so that it comes back to the bit, and a second
 * writing gives the same text. */
TEST(CbfFiles, RoundTripBitByBit)
{
    const std::vector<listed_file> files = listed_files();
    if (files.empty()) GTEST_SKIP() << "no problem files";
    const temp_folder folder;
    for (const listed_file &file : files) {
        if (file.kind == "BAD") continue;
        SCOPED_TRACE(file.path);
        caught_io context(std::string(ZELOR_DATA_DIR "/") + file.path);
        model m;
        if (read_file(&context, &m) != ZLR_RES_OK) continue;
        caught_io copy(folder.file("copy.cbf"));
        caught_io again(folder.file("again.cbf"));
        model back;
        int32_t format = -1;
        EXPECT_EQ(problem_write(&copy.io, &m, &format), ZLR_RES_OK);
        EXPECT_EQ(problem_read(&copy.io, &back, &format), ZLR_RES_OK);
        EXPECT_EQ(copy.log, "");
        names_clear(&m.var_names);
        names_resize(&m.var_names, m.num_var);
        expect_same(m, back);
        EXPECT_EQ(problem_write(&again.io, &back, &format), ZLR_RES_OK);
        EXPECT_EQ(file_text(copy.name), file_text(again.name));
    }
}

/* ---- problems of other formats ---- */

double off(double value, double lower, double upper) { return std::max({0.0, lower - value, value - upper}); }

double largest_violation(const model &m, const std::vector<double> &x)
{
    std::vector<double> activity(static_cast<size_t>(m.num_con));
    double most = 0.0;
    model_activity(&m, x.data(), activity.data());
    for (size_t i = 0; i < activity.size(); i++)
        most = std::max(most, off(activity[i], m.con_lower[i], m.con_upper[i]));
    for (size_t j = 0; j < x.size(); j++) most = std::max(most, off(x[j], m.var_lower[j], m.var_upper[j]));
    for (const model_cone &cone : m.cones) most = std::max(most, cone_violation(&cone, x.data()));
    return most;
}

/* The point with the values of the rows in cones behind it. */
std::vector<double> extended(const model &m, std::vector<double> x)
{
    const size_t own = x.size();
    x.resize(static_cast<size_t>(m.num_var), 0.0);
    std::vector<double> activity(static_cast<size_t>(m.num_con));
    model_activity(&m, x.data(), activity.data());
    for (size_t j = own; j < x.size(); j++) {
        const auto i = static_cast<size_t>(m.a.row[static_cast<size_t>(m.a.start[j])]);
        x[j] = activity[i] - m.con_lower[i];
    }
    return x;
}

void expect_same_problem(const model &m, const model &back)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> uniform(-2.0, 2.0);
    EXPECT_GE(back.num_var, m.num_var);
    EXPECT_EQ(m.sense, back.sense);
    EXPECT_EQ(model_num_int(&m), model_num_int(&back));
    for (int k = 0; k < 5; k++) {
        std::vector<double> x(static_cast<size_t>(m.num_var));
        for (double &value : x) value = uniform(random);
        const std::vector<double> longer = extended(back, x);
        const double violation = largest_violation(m, x);
        EXPECT_NEAR(largest_violation(back, longer), violation, 1e-12 * std::max(1.0, violation));
        EXPECT_EQ(model_objective(&m, x.data()), model_objective(&back, longer.data()));
    }
}

/* Bounds and ranges become rows, so that the data are others, and the problem is the same. */
TEST(CbfFiles, ProblemsOfOtherFormatsStayTheSame)
{
    static const char *const names[] = {"lp/boeing2.mps",           "lp/kb2.mps",       "mip/p0033.mps",
                                        "mip/flugpl.mps",           "ranging/plan.mps", "mip/bell5.mps",
                                        "reader/moi_example_lo1.lp"};
    if (!std::filesystem::exists(ZELOR_DATA_DIR "/lp")) GTEST_SKIP() << "no problem files";
    const temp_folder folder;
    for (const char *name : names) {
        SCOPED_TRACE(name);
        caught_io context(std::string(ZELOR_DATA_DIR "/") + name);
        caught_io copy(folder.file("copy.cbf"));
        model m;
        model back;
        int32_t format = -1;
        ASSERT_EQ(problem_read(&context.io, &m, &format), ZLR_RES_OK) << context.log;
        ASSERT_EQ(problem_write(&copy.io, &m, &format), ZLR_RES_OK) << copy.log;
        ASSERT_EQ(problem_read(&copy.io, &back, &format), ZLR_RES_OK) << copy.log;
        expect_same_problem(m, back);
    }
}

/* Cones of any columns, in any order, with bounds of their own. */
TEST(CbfFiles, RandomConesStayTheSame)
{
    std::mt19937 random(5);
    const temp_folder folder;
    for (int round = 0; round < 50; round++) {
        SCOPED_TRACE(round);
        const int32_t num = 12;
        model m;
        model back;
        model_append_vars(&m, num);
        std::vector<int32_t> order(static_cast<size_t>(num));
        for (int32_t j = 0; j < num; j++) order[static_cast<size_t>(j)] = j;
        if (round % 2 == 0) std::shuffle(order.begin(), order.end(), random);
        for (size_t j = 0; j < static_cast<size_t>(num); j++) {
            const int lower = static_cast<int>(random() % 4), upper = static_cast<int>(random() % 4);
            m.var_lower[j] = lower == 0 ? 0.0 : lower == 1 ? -0.75 : -model_inf;
            m.var_upper[j] = upper == 0 ? 0.0 : upper == 1 ? 1.5 : model_inf;
        }
        for (size_t at = 0; at + 4 <= order.size(); at += 4)
            m.cones.push_back(
                {at % 8 == 0 ? ZLR_CT_QUAD : ZLR_CT_RQUAD, {order[at], order[at + 1], order[at + 2], order[at + 3]}});
        caught_io copy(folder.file("copy.cbf"));
        int32_t format = -1;
        ASSERT_EQ(problem_write(&copy.io, &m, &format), ZLR_RES_OK) << copy.log;
        ASSERT_EQ(problem_read(&copy.io, &back, &format), ZLR_RES_OK) << copy.log;
        expect_same_problem(m, back);
    }
}
}  // namespace
