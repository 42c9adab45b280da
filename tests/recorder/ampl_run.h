/* ampl_run.h - runs the program on the recorder in AMPL mode, with a stub of the test's own. */
#pragma once

#include "recorded_run.h"
#include "support/nl_text.h"

struct ampl_request {
    std::string stub;                              /* text of s.nl; empty: there is none */
    std::string script = "";                       /* answers of the recorder */
    std::string words = "";                        /* behind "s -AMPL" */
    std::string options = "";                      /* zelor_options */
    std::string row_names = "", column_names = ""; /* s.row, s.col; empty: none */
    std::string line = "";                         /* another line than "s -AMPL" and the words */
    bool may_print_errors = false;
    bool may_fail = true; /* the transfer may fail, which leaves the job's blocks to the task */
};

struct ampl_result {
    recorded_run run;
    bool has_sol = false;
    std::string sol;
    std::vector<std::string> transfer; /* what filled the task, without memory and parameter names */
    int num_kept = 0;                  /* blocks of the job that were never released */
};

ampl_result run_ampl(const ampl_request &request);

/* Lines of the transfer that begin with one of the names, one blank between two. */
std::string part_of(const ampl_result &result, const std::string &names);

/* A small linear model of two columns and two rows: minimise x + 2 y, x + y >= 1, x - y <= 2, both at least 0. */
nl_model small_model();

/* The report of a .sol file, and its "objno" line's code. */
std::string report_of(const std::string &sol);
int code_of(const std::string &sol);
