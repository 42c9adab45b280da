/* recorder.h - inside the recorder, a stand-in for the solver library with its file name and its entries.
 *
 * It solves nothing. Every call goes, with its arguments, as one line into the file named by the environment variable
 * ZELOR_RECORD, in order. What the calls answer comes from the script named by ZELOR_SCRIPT, a line each:
 *
 *   code ENTRY N CODE    the N-th call of ENTRY returns CODE; N 0: every call
 *   fail N CODE          the N-th call of all entries that return a code returns CODE
 *   raise ENTRY N SIG    signal SIG is raised at the beginning of the N-th call of ENTRY
 *   nomem N              the N-th allocation for the program fails
 *   nocopy N, nocalloc N the N-th strdup or calloc of the program itself fails (not under a sanitizer)
 *   str NUMBER TEXT, int NUMBER VALUE, dou NUMBER VALUE     parameters
 *   rows N, columns N, integers N, type N                   what the task holds; otherwise what was put there
 *   defined KIND, status KIND VALUE, prosta KIND VALUE      what a solution is like
 *   x J VALUE, slx J VALUE, sux J VALUE, columnkey J KEY, y I VALUE, rowkey I KEY, primal KIND VALUE, dual KIND VALUE
 *                                                           and what it holds
 *   leftrangei K VALUE and so on                            sensitivity, by the names of its arguments
 *   evaluate ..., later ...                                 the nonlinear callbacks are called by the optimiser, or later, when
 *                        the program asks for solutions: see evaluations.cpp
 *   class N              response class of every code; without it by the range of the code
 *   poll N, raisepoll N SIG, pause MS, stubborn             the optimiser: N polls of the callback, MS apart, with a
 *                        signal before the N-th; it stops at the first answer that is not 0 unless stubborn
 *
 * In the record, handles are env1, task1, task2, memory handed out is mem1 and so on, other memory is "foreign". Misuse
 * adds a line that begins with "!!": a block freed twice, by the wrong owner or never, written beyond its end, a handle
 * used after its end or left over. Memory is never given back, so that misuse is found and does no harm. */
#pragma once

#include "zelor.h"

#include <cstdint>
#include <string>
#include <vector>

struct linked_stream {
    ZLR_streamfunc func = nullptr;
    void *handle = nullptr;
};

struct ZLR_env {
    int32_t number = 0;
    bool live = true;
    linked_stream streams[ZLR_STREAM_COUNT];
};

struct row_bound {
    int32_t key = ZLR_BK_FR;
    double lower = 0.0, upper = 0.0;
};

struct ZLR_task {
    int32_t number = 0;
    bool live = true;
    ZLR_env *env = nullptr;
    linked_stream streams[ZLR_STREAM_COUNT];
    /* What was put, as far as some entry gives it back. */
    std::vector<row_bound> rows;
    std::vector<double> c; /* one a column */
    std::vector<int32_t> types;
    std::vector<std::string> names;
    int32_t num_cones = 0;
    ZLR_callbackfunc callback = nullptr;
    void *callback_handle = nullptr;
    void *nl_handle = nullptr;
    ZLR_nlgetspfunc_t getsp = nullptr;
    ZLR_nlgetvafunc_t getva = nullptr;
};

/* ---- Recording ---- */

/* A line of its own, and one about misuse. */
void record_line(const std::string &text);
void record_misuse(const std::string &text);

/* An argument as it shows in the record. */
std::string shown(ZLR_env *env);
std::string shown(ZLR_task *task);
std::string shown(const char *text);
std::string shown(int32_t value);
std::string shown(int64_t value);
std::string shown(uint64_t value);
std::string shown(double value);
std::string shown(const void *block); /* memory handed out, or null, or foreign */
std::string shown_codes(const int32_t *codes);

/* The values of an array of the caller's, or null. */
template <typename value_type> std::string shown_array(int64_t num, const value_type *values)
{
    if (values == nullptr) return "null";
    std::string text;
    for (int64_t k = 0; k < num; ++k) text += (k > 0 ? " " : "") + shown(values[k]);
    return "{" + text + "}";
}

/* Records a call that returns nothing. */
void record_call(const char *entry, const std::string &args);

/* Records a call and gives the code that the script has for it. */
int32_t record_result(const char *entry, const std::string &args);

template <typename... types> std::string shown_list(types... args)
{
    std::string text;
    ((text += (text.empty() ? "" : ", ") + shown(args)), ...);
    return text;
}

template <typename... types> int32_t answer(const char *entry, types... args)
{
    return record_result(entry, shown_list(args...));
}

/* ---- Script ---- */

/* The number that the script gives to a word and a key, as in "status 1 5", or `otherwise`. */
int64_t script_number(const std::string &word, int64_t key, int64_t otherwise);

/* Lines of the script that begin with a word of evaluations.cpp, without it, in order. */
const std::vector<std::string> &script_list(const std::string &word);

double script_real(const std::string &word, int64_t key, double otherwise);

/* Parameters that the program puts. */
void script_put_number(const std::string &word, int64_t key, int64_t value);
std::string script_text(int32_t number);
void script_put_text(int32_t number, const char *text);

/* ---- Handles and memory ---- */

ZLR_env *handle_make_env();
ZLR_task *handle_make_task(ZLR_env *env);
void handle_end(ZLR_env *env);
void handle_end(ZLR_task *task); /* tells what was not given back */

/* Zeroed memory of an owner (a handle), or null where the script says so. */
void *memory_make(const void *owner, uint64_t size, bool may_fail);
void memory_free(const char *entry, const void *owner, void *block);

/* ---- evaluations.cpp ---- */

void run_evaluations(ZLR_task *task, const char *when);
