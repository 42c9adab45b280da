/* ampl_support.h - what the AMPL tests share: a run of the program on a stub, the .sol file that it leaves, and a judge of
 * answers that goes by the stub alone. */
#pragma once

#include "run/run_support.h"
#include "support/nl_text.h"

#include <string>
#include <utility>
#include <vector>

/* ---- .sol files ---- */

struct sol_suffix {
    int kind = 0; /* 0 column, 1 row; 4 more: real values */
    std::string name;
    std::vector<std::pair<int, double>> values;
};

struct sol_file {
    std::string complaint; /* the first thing wrong with the file; empty: it is whole and nothing stands behind it */
    std::string message;
    std::vector<int> options;
    int num_con = 0, num_y = 0, num_var = 0, num_x = 0;
    std::vector<double> y, x;
    int objno = -1, code = -1;
    std::vector<sol_suffix> suffixes;
};

/* Reads the text form strictly: every line must be what its place asks for. */
sol_file sol_read(const std::string &text);

/* All values of a suffix, 0 where the file gives none; empty: the file has no such suffix. */
std::vector<double> sol_suffix_values(const sol_file &sol, const std::string &name, int kind, int length);

/* ---- Runs ---- */

struct ampl_run {
    process_result process;
    bool has_sol = false;
    sol_file sol;
};

/* "zelor STUB -AMPL words..." in the folder; zelor_options is what is given. A .sol file of before is removed. */
ampl_run run_ampl(const temp_folder &folder, const std::string &stub, const std::vector<std::string> &words,
                  const std::string &zelor_options = "", const std::vector<process_signal> &signals = {});

/* The memory trace that "zelor model words... -a -dbgmem" leaves of the stub "model.nl" in the folder. */
std::string run_with_trace(const temp_folder &folder, const std::vector<std::string> &words);

/* A data file in the folder, unpacked, with its .row and .col beside it. Returns the stub's name, without ".nl". */
std::string copy_stub(const temp_folder &folder, const data_row &row);

/* A model of a test's own in the folder, as "model.nl". */
void write_stub(const temp_folder &folder, const nl_model &model, nl_form form = NL_TEXT);

/* ---- What is not taken ---- */

/* Why a linear or quadratic stub of the data has no answer; without AMPL_EXTENDED most of these leave no .sol file. */
enum stub_refusal { TAKEN, TWO_SIDED, NOT_CONVEX, COMPLEMENTARITY, SETS };
stub_refusal stub_refusal_of(const std::string &stub);

/* ---- The judge ---- */

/* What the AMPL Solver Library's own evaluation says of a point of a stub. */
struct stub_judgement {
    bool is_read = false;
    int num_con = 0, num_var = 0;
    bool maximise = false;
    double objective = 0.0;
    double infeasibility = 0.0;   /* worst violation of a row, bound or integer mark, relative to 1 + |bound| */
    double gap = 0.0;             /* of a convex model: what the duals leave open between the point and the optimum */
    double complementarity = 0.0; /* largest product of a dual, above rounding, and the distance from its bound */
    double loose_dual = 0.0;      /* worst dual or reduced cost against an infinite bound, relative to its terms */
    std::vector<double> reduced_cost, reduced_terms; /* and the size of what each is made of */
};

stub_judgement judge_point(const std::string &stub, const std::vector<double> &x, const std::vector<double> &y);

/* The vectors of a .sol file of either form, as the AMPL Solver Library reads them. */
bool read_sol_vectors(const std::string &stub, std::vector<double> *x, std::vector<double> *y);
