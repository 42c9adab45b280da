/* ampl_support.cpp - see ampl_support.h: runs and .sol files. */
#include "ampl_support.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <sstream>

/* ---- .sol files ---- */

/* What is left to read. Each step does nothing once there is a complaint. */
struct sol_reader {
    std::istringstream in;
    int line = 0;
    std::string complaint;
};

static std::string next_line(sol_reader *r)
{
    std::string text;
    if (!r->complaint.empty()) return text;
    ++r->line;
    if (!std::getline(r->in, text)) r->complaint = "the file ends at line " + std::to_string(r->line);
    return text;
}

static void complain(sol_reader *r, const std::string &wanted, const std::string &found)
{
    if (r->complaint.empty())
        r->complaint = "line " + std::to_string(r->line) + ": " + wanted + " wanted, found '" + found + "'";
}

/* A line of numbers, exactly `num` of them. */
static std::vector<double> numbers(sol_reader *r, size_t num, const std::string &text)
{
    std::vector<double> values;
    const char *at = text.c_str();
    for (char *end = nullptr; *at != 0; at = end) {
        const double value = std::strtod(at, &end);
        if (end == at) break;
        values.push_back(value);
    }
    if (*at != 0 || values.size() != num) complain(r, std::to_string(num) + " numbers", text);
    values.resize(num);
    return values;
}

static int next_integer(sol_reader *r)
{
    const double value = numbers(r, 1, next_line(r))[0];
    if (value != static_cast<int>(value)) complain(r, "an integer", std::to_string(value));
    return static_cast<int>(value);
}

static void read_vector(sol_reader *r, int num, std::vector<double> *out)
{
    for (int k = 0; k < num && r->complaint.empty(); ++k) out->push_back(numbers(r, 1, next_line(r))[0]);
}

static void read_message(sol_reader *r, sol_file *sol)
{
    std::string text = next_line(r);
    while (r->complaint.empty() && !text.empty()) {
        sol->message += text + "\n";
        text = next_line(r);
    }
    if (sol->message.empty()) complain(r, "a message", "a blank line"); /* which upsets readers of such files */
    text = next_line(r);
    if (text != "Options") complain(r, "Options", text);
}

static void read_sizes(sol_reader *r, sol_file *sol)
{
    const int num = next_integer(r);
    for (int k = 0; k < num && r->complaint.empty(); ++k) sol->options.push_back(next_integer(r));
    for (int *size : {&sol->num_con, &sol->num_y, &sol->num_var, &sol->num_x}) *size = next_integer(r);
}

static void read_suffix(sol_reader *r, const std::string &head, sol_file *sol)
{
    static const std::string word = "suffix ";
    if (head.compare(0, word.size(), word) != 0) return complain(r, "a suffix", head);
    const std::vector<double> n = numbers(r, 5, head.substr(word.size()));
    sol_suffix suffix;
    suffix.kind = static_cast<int>(n[0]);
    suffix.name = next_line(r);
    if (n[2] != static_cast<double>(suffix.name.size() + 1)) complain(r, "a name of that length", suffix.name);
    if (n[3] != 0 || n[4] != 0) complain(r, "a suffix without a table", head);
    const int length = (suffix.kind & 3) == 0 ? sol->num_var : sol->num_con;
    for (int k = 0; k < static_cast<int>(n[1]) && r->complaint.empty(); ++k) {
        const std::vector<double> pair = numbers(r, 2, next_line(r));
        if (pair[0] < 0 || pair[0] >= length) complain(r, "an index below " + std::to_string(length), "another");
        suffix.values.emplace_back(static_cast<int>(pair[0]), pair[1]);
    }
    sol->suffixes.push_back(suffix);
}

sol_file sol_read(const std::string &text)
{
    sol_file sol;
    sol_reader r = {std::istringstream(text), 0, ""};
    read_message(&r, &sol);
    read_sizes(&r, &sol);
    read_vector(&r, sol.num_y, &sol.y);
    read_vector(&r, sol.num_x, &sol.x);
    static const std::string word = "objno ";
    const std::string head = next_line(&r);
    if (head.compare(0, word.size(), word) != 0) complain(&r, "objno", head);
    if (r.complaint.empty()) {
        const std::vector<double> n = numbers(&r, 2, head.substr(word.size()));
        sol.objno = static_cast<int>(n[0]);
        sol.code = static_cast<int>(n[1]);
    }
    while (r.complaint.empty() && r.in.peek() != EOF) read_suffix(&r, next_line(&r), &sol);
    sol.complaint = r.complaint;
    return sol;
}

std::vector<double> sol_suffix_values(const sol_file &sol, const std::string &name, int kind, int length)
{
    for (const sol_suffix &suffix : sol.suffixes) {
        if (suffix.name != name || (suffix.kind & 3) != kind) continue;
        std::vector<double> values(static_cast<size_t>(length));
        for (const auto &[index, value] : suffix.values) values.at(static_cast<size_t>(index)) = value;
        return values;
    }
    return {};
}

/* ---- Runs ---- */

ampl_run run_ampl(const temp_folder &folder, const std::string &stub, const std::vector<std::string> &words,
                  const std::string &zelor_options, const std::vector<process_signal> &signals)
{
    ampl_run run;
    process_options options;
    options.args = {stub, "-AMPL"};
    options.args.insert(options.args.end(), words.begin(), words.end());
    options.environment = {{"zelor_options", zelor_options}};
    options.folder = folder.path;
    options.signals = signals;
    const std::string sol = folder.file(stub + ".sol");
    std::remove(sol.c_str());
    run.process = process_run(ZELOR_PROGRAM, options);
    run.has_sol = file_exists(sol);
    if (run.has_sol) run.sol = sol_read(file_read(sol));
    return run;
}

static std::string unpacked(const std::string &path)
{
    std::string text;
    char piece[65536];
    gzFile in = gzopen(path.c_str(), "rb"); /* plain files pass through */
    if (in == nullptr) return text;
    for (int num = gzread(in, piece, sizeof piece); num > 0; num = gzread(in, piece, sizeof piece))
        text.append(piece, static_cast<size_t>(num));
    gzclose(in);
    return text;
}

std::string copy_stub(const temp_folder &folder, const data_row &row)
{
    std::string stub = row.path.substr(row.path.rfind('/') + 1);
    stub = stub.substr(0, stub.find(".nl"));
    file_write(folder.file(stub + ".nl"), unpacked(data_path(row.path)));
    for (const char *extension : {".row", ".col"}) {
        const std::string beside = "nl/" + stub + extension;
        if (file_exists(data_path(beside))) (void)copy_data(folder, beside);
    }
    return stub;
}

void write_stub(const temp_folder &folder, const nl_model &model, nl_form form)
{
    file_write(folder.file("model.nl"), nl_text(model, form));
}

std::string run_with_trace(const temp_folder &folder, const std::vector<std::string> &words)
{
    process_options options;
    options.folder = folder.path;
    options.args = {"model"};
    options.args.insert(options.args.end(), words.begin(), words.end());
    options.args.insert(options.args.end(), {"-a", "-dbgmem", "trace"});
    const process_result run = process_run(ZELOR_PROGRAM, options);
    EXPECT_EQ(run.signal, 0);
    return file_read(folder.file("trace"));
}

/* ---- What is not taken ---- */

static const struct {
    const char *stub;
    stub_refusal why;
} refused[] = {
    {"pyomo_mpec_t2a", COMPLEMENTARITY},
    {"pyomo_mpec_t3a", COMPLEMENTARITY},
    {"sos1a", SETS},
    {"gjh_stub1", SETS},
    {"bt1", TWO_SIDED},
    {"bt12", TWO_SIDED},
    {"bt13", TWO_SIDED},
    {"bt8", TWO_SIDED},
    {"byrdsphr", TWO_SIDED},
    {"coolhans", TWO_SIDED},
    {"dispatch", TWO_SIDED},
    {"gilbert", TWO_SIDED},
    {"hs006", TWO_SIDED},
    {"hs061", TWO_SIDED},
    {"hs063", TWO_SIDED},
    {"hs084", TWO_SIDED},
    {"kall_circles_c8a", TWO_SIDED},
    {"pyomo_small1", TWO_SIDED},
    {"pyomo_small2", TWO_SIDED},
    {"pyomo_small3", TWO_SIDED},
    {"pyomo_small5", TWO_SIDED},
    {"pyomo_small6", TWO_SIDED},
    {"st_e02", TWO_SIDED},
    {"st_e05", TWO_SIDED},
    {"st_e07", TWO_SIDED},
    {"couenne_prod", NOT_CONVEX},
    {"couenne_qquad", NOT_CONVEX},
    {"hs095", NOT_CONVEX},
    {"hs096", NOT_CONVEX},
    {"hs098", NOT_CONVEX},
    {"hs106", NOT_CONVEX},
    {"hs108", NOT_CONVEX},
    {"kiwcresc", NOT_CONVEX},
    {"prodpl0", NOT_CONVEX},
    {"prodpl1", NOT_CONVEX},
    {"sosqp1", NOT_CONVEX},
    {"st_e09", NOT_CONVEX},
    {"st_e18", NOT_CONVEX},
};

stub_refusal stub_refusal_of(const std::string &stub)
{
    for (const auto &r : refused)
        if (stub == r.stub) return r.why;
    return TAKEN;
}
