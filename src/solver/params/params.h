/* params.h - the one table of parameters, the values of a task, and what is done with them by name.
 *
 * Everything that knows parameters reads the table: defaults, range checks, the command line, parameter files, help and
 * docs/parameters.md. A new parameter is one row in table.cpp, one enumerator here, and its use. Numbers and names of
 * released parameters stay. */
#pragma once

#include "cpub/sysenv.h"
#include "solver/report/streams.h"
#include "zelor.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr int32_t param_num_double = 70;
inline constexpr int32_t param_num_int = 173;
inline constexpr int32_t param_num_str = 24;

/* The numbers of the parameters: one enumerator a row. The fixed ones stand in zelor.h; see param_ids.h. */
#include "solver/params/param_ids.h"

struct param_row {
    int32_t param_class; /* ZLR_PAR_... */
    int32_t number;
    const char *name;
    double def, min, max;      /* double and integer parameters */
    const char *str_def;       /* string parameters */
    const char *words;         /* "OFF=0 ON=1": words for values, or null. With words only these values are taken */
    const char *unit;          /* "s", "" ... */
    const char *engine_option; /* "highs:time_limit": handed to that engine as it stands; null: used by our own code */
    const char *text;          /* one line for users: what it does */
};

struct param_set {
    std::vector<double> dou;      /* param_num_double values */
    std::vector<int32_t> integer; /* param_num_int */
    std::vector<std::string> str; /* param_num_str */
};

/* All rows, sorted by class, then number. */
const param_row *param_table(int32_t *num);

/* Whether a row only holds its number: setting it is refused, and files leave it out. */
bool param_is_reserved(const param_row *row);

/* A row by class and number, or by name (no regard to case); null if there is none. */
const param_row *param_find(int32_t param_class, int32_t number);
const param_row *param_find_name(const char *name);

/* The known name that is nearest to `name`, or null if none is near. */
const char *param_nearest(const char *name);

void param_set_defaults(param_set *set);
bool param_is_default(const param_set *set, const param_row *row);

/* Value as text, by word where the row has words: what files and listings show. */
std::string param_value_text(const param_set *set, const param_row *row);

/* Calls `see` for every word of a row with its value; stops when it returns false. */
void param_each_word(const param_row *row, const std::function<bool(std::string_view word, int32_t value)> &see);

/* Range or words as text: what messages, listings and the reference page show. */
std::string param_allowed_text(const param_row *row);

/* Set values. A bad value leaves the parameter as it was and is told on the error stream of `out`.
 * Return ZLR_RES_OK, ZLR_RES_ERR_PARAM_NAME, ZLR_RES_ERR_PARAM_VALUE. */
[[nodiscard]] int32_t param_put_double(param_set *set, int32_t number, double value, stream_set *out);
[[nodiscard]] int32_t param_put_int(param_set *set, int32_t number, int32_t value, stream_set *out);
[[nodiscard]] int32_t param_put_str(param_set *set, int32_t number, const char *value, stream_set *out);
[[nodiscard]] int32_t param_put_text(param_set *set, const char *name, const char *value, stream_set *out);

/* As param_put_text, with the message left to the caller: a sentence without a full stop in *message. */
[[nodiscard]] int32_t param_set_text(param_set *set, const char *name, const char *value, std::string *message);

/* Shortest text that reads back as the same bits. */
std::string param_double_text(double value);

/* Parameter files; see ZLR_readparamfile and ZLR_writeparamfile. */
[[nodiscard]] int32_t param_read_file(param_set *set, sysenv *sys, const char *filename, stream_set *out);
[[nodiscard]] int32_t param_write_file(const param_set *set, sysenv *sys, const char *filename, stream_set *out);

/* The listing of ZLR_printparam, and docs/parameters.md. */
void param_print(const param_set *set, stream_set *out, int32_t stream);
std::string param_reference_page(void);

inline double param_dou(const param_set *set, int32_t number) { return set->dou[static_cast<size_t>(number)]; }
inline int32_t param_int(const param_set *set, int32_t number) { return set->integer[static_cast<size_t>(number)]; }
inline const char *param_str(const param_set *set, int32_t number)
{
    return set->str[static_cast<size_t>(number)].c_str();
}
