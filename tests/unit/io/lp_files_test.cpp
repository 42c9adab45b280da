/* lp_files_test.cpp - the LP reader and writer on real problem files, and what other programs make of what is written. */
#include "lp_support.h"

#include <algorithm>
#include <cmath>
#include <map>

using namespace lp_support;
namespace fs = std::filesystem;

namespace
{
struct listed_file {
    std::string path, rows, columns, nonzeros, value;
};

/* Files of the list whose name has one of the endings. */
std::vector<listed_file> listed_files(const std::vector<std::string> &endings)
{
    std::vector<listed_file> files;
    std::ifstream list(ZELOR_DATA_DIR "/MANIFEST.tsv");
    for (std::string line; std::getline(list, line);) {
        std::istringstream in(line);
        listed_file f;
        std::string skipped;
        for (std::string *field : {&f.path, &skipped, &f.rows, &f.columns, &f.nonzeros, &skipped, &f.value})
            std::getline(in, *field, '\t');
        for (const std::string &ending : endings)
            if (f.path.ends_with(ending)) files.push_back(f);
    }
    return files;
}

int32_t read_file(session *s, const std::string &path, model *m)
{
    int32_t format = -1;
    s->io.file = path.c_str();
    const int32_t res = problem_read(&s->io, m, &format);
    s->io.file = "t.lp";
    return res;
}

/* Files that must be refused, and the words that tell why. */
const std::map<std::string, std::pair<int32_t, const char *>> refused_files = {
    {"bad/1449a.lp", {ZLR_RES_ERR_FILE_FORMAT, "'End'"}},
    {"bad/1449b.lp", {ZLR_RES_ERR_FILE_FORMAT, "'End'"}},
    {"bad/garbage.lp", {ZLR_RES_ERR_FILE_FORMAT, "'Minimize' or 'Maximize'"}},
    {"bad/invalid_sos_constraint.lp", {ZLR_RES_ERR_FILE_UNSUPPORTED, "'SOS'"}},
    {"bad/invalid_sos_set.lp", {ZLR_RES_ERR_FILE_UNSUPPORTED, "'SOS'"}},
    {"bad/invalid_variable_name.lp", {ZLR_RES_ERR_FILE_FORMAT, "(3): found '1'"}},
    {"mip/mcf128-4-1.lp.gz", {ZLR_RES_ERR_FILE_UNSUPPORTED, "indicator"}},
    {"mip/mcf64-4-1.lp.gz", {ZLR_RES_ERR_FILE_UNSUPPORTED, "indicator"}},
    {"mip/semi-integer.lp", {ZLR_RES_ERR_FILE_UNSUPPORTED, "'Semi-Continuous'"}},
    {"mip/sparse2.lp", {ZLR_RES_ERR_FILE_UNSUPPORTED, "'SOS'"}},
    {"mip/tpesc.lp.gz", {ZLR_RES_ERR_FILE_UNSUPPORTED, "'SOS'"}},
    {"qcqp/meanvarxsc.lp", {ZLR_RES_ERR_FILE_UNSUPPORTED, "'Semi-Continuous'"}},
};

/* The list counts words of this file that are no columns; other readers agree with these sizes. */
const char odd_file[] = "ranging/plan.lp";

TEST(lp_files, sizes_are_as_listed)
{
    const std::vector<listed_file> files = listed_files({".lp", ".lp.gz"});
    if (files.empty()) GTEST_SKIP() << "no problem files";
    for (const listed_file &f : files) {
        SCOPED_TRACE(f.path);
        session s;
        model m;
        const int32_t res = read_file(&s, std::string(ZELOR_DATA_DIR "/") + f.path, &m);
        const auto refused = refused_files.find(f.path);
        if (refused != refused_files.end()) {
            EXPECT_EQ(res, refused->second.first);
            EXPECT_NE(s.messages.errors.find(refused->second.second), std::string::npos) << s.messages.errors;
            continue;
        }
        EXPECT_EQ(res, ZLR_RES_OK) << s.messages.errors;
        const bool odd = f.path == odd_file;
        EXPECT_EQ(std::to_string(m.num_con), f.rows);
        EXPECT_EQ(std::to_string(m.num_var), odd ? "7" : f.columns);
        EXPECT_EQ(std::to_string(m.a.row.size()), odd ? "48" : f.nonzeros);
    }
}

/* Takes explicit zeros out of the matrix: an LP file does not keep them. */
void drop_zeros(model *m)
{
    sparse_columns kept;
    for (size_t j = 0; j + 1 < m->a.start.size(); j++) {
        for (auto k = static_cast<size_t>(m->a.start[j]); k < static_cast<size_t>(m->a.start[j + 1]); k++) {
            if (m->a.value[k] == 0.0) continue;
            kept.row.push_back(m->a.row[k]);
            kept.value.push_back(m->a.value[k]);
        }
        kept.start.push_back(static_cast<int64_t>(kept.row.size()));
    }
    m->a = kept;
}

/* Sorts the rows of each column, as a text by rows brings them. */
void sort_rows(model *m)
{
    std::vector<std::pair<int32_t, double>> entries;
    for (size_t j = 0; j + 1 < m->a.start.size(); j++) {
        const auto first = static_cast<size_t>(m->a.start[j]);
        const auto last = static_cast<size_t>(m->a.start[j + 1]);
        entries.clear();
        for (size_t k = first; k < last; k++) entries.emplace_back(m->a.row[k], m->a.value[k]);
        std::sort(entries.begin(), entries.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
        for (size_t k = first; k < last; k++) {
            m->a.row[k] = entries[k - first].first;
            m->a.value[k] = entries[k - first].second;
        }
    }
}

TEST(lp_files, written_files_read_back_to_the_bit)
{
    std::vector<listed_file> files = listed_files({".lp", ".lp.gz", ".mps", ".mps.gz", ".qps"});
    if (files.empty()) GTEST_SKIP() << "no problem files";
    const scratch folder;
    const std::string path = folder.path + "/back.lp";
    int num_read = 0;
    for (const listed_file &f : files) {
        const std::string source = std::string(ZELOR_DATA_DIR "/") + f.path;
        if (f.path.starts_with("bad/") || fs::file_size(source) > 300000) continue;
        SCOPED_TRACE(f.path);
        session s;
        model m;
        model back;
        if (read_file(&s, source, &m) != ZLR_RES_OK) continue; /* what the readers refuse is tested elsewhere */
        s.messages = {};
        ASSERT_EQ(write_file(&s, &m, path), ZLR_RES_OK);
        const bool renamed = s.messages.warnings.find("were replaced") != std::string::npos;
        ASSERT_EQ(read_file(&s, path, &back), ZLR_RES_OK) << s.messages.errors;
        drop_zeros(&m);
        sort_rows(&m);
        EXPECT_EQ(difference(&m, &back, !renamed), "");
        num_read++;
    }
    EXPECT_GT(num_read, 50);
}

/* ---- peers */

std::string output_of(const std::string &command)
{
    std::string text;
    FILE *pipe = popen((command + " 2>&1 </dev/null").c_str(), "r");
    if (pipe == nullptr) return text;
    char block[4096];
    for (size_t got; (got = fread(block, 1, sizeof block, pipe)) > 0;) text.append(block, got);
    pclose(pipe);
    return text;
}

/* The number behind `mark`, NaN if the mark is not there. */
double number_behind(const std::string &text, const std::string &mark)
{
    const size_t at = text.rfind(mark);
    return at == std::string::npos ? std::nan("") : std::strtod(text.c_str() + at + mark.size(), nullptr);
}

/* "Objective:  obj = 3 (MINimum)" of a printed solution. */
std::string objective_line(const std::string &text)
{
    const size_t at = text.find("Objective:");
    return at == std::string::npos ? "" : text.substr(at, text.find('\n', at) - at);
}

bool is_near(double a, double b) { return std::fabs(a - b) <= 1e-5 * std::max(1.0, std::fabs(b)); }

/* Files whose optimum two other programs must find in what we write: ranges, free rows, negative bounds, integers. */
const char *const peer_files[] = {"ranging/plan.lp",
                                  "lp/blend.mps",
                                  "lp/kb2.mps",
                                  "lp/boeing2.mps",
                                  "lp/sc50b.mps",
                                  "lp/capri.mps.gz",
                                  "mip/johnson8-2-4.lp",
                                  "lp/stair.mps.gz",
                                  "lp/vtpbase.mps",
                                  "lp/maros.mps.gz",
                                  "mip/stp_s003_l1_t2_h0_rs97531.lp"};

TEST(lp_files, peers_find_the_same_optimum)
{
    const bool has_glpsol = std::system("command -v glpsol >/dev/null 2>&1") == 0;
    const bool has_cbc = std::system("command -v cbc >/dev/null 2>&1") == 0;
    const std::vector<listed_file> files = listed_files({".lp", ".mps", ".mps.gz"});
    if (files.empty() || (!has_glpsol && !has_cbc)) GTEST_SKIP() << "no problem files or no peers";
    const scratch folder;
    const std::string path = folder.path + "/peer.lp";
    const std::string answer = folder.path + "/answer";
    for (const listed_file &f : files) {
        if (std::find(std::begin(peer_files), std::end(peer_files), f.path) == std::end(peer_files)) continue;
        SCOPED_TRACE(f.path);
        session s;
        s.params.integer[IPAR_WRITE_LP_RANGES] = LP_RANGES_SPLIT;
        model m;
        ASSERT_EQ(read_file(&s, std::string(ZELOR_DATA_DIR "/") + f.path, &m), ZLR_RES_OK) << s.messages.errors;
        m.cfix = 0.0; /* not all peers know a constant */
        ASSERT_EQ(write_file(&s, &m, path), ZLR_RES_OK);
        const double optimum = std::strtod(f.value.c_str(), nullptr);
        if (has_glpsol && m.num_var < 300) {
            const std::string log = output_of("glpsol --tmlim 20 --lp " + path + " -o " + answer);
            const double value = number_behind(objective_line(file_text(answer)), " = ");
            EXPECT_TRUE(is_near(value, optimum)) << value << " for " << optimum << "\n" << log;
        }
        if (has_cbc) {
            const std::string log = output_of("cbc " + path + " -seconds 20 solve");
            double value = number_behind(log, "Objective value:");
            if (std::isnan(value)) value = number_behind(log, "objective value");
            EXPECT_TRUE(is_near(std::fabs(value), std::fabs(optimum))) << value << " for " << optimum << "\n" << log;
        }
    }
}
}  // namespace
