/* evaluations.cpp - calls the nonlinear callbacks as the script asks for, and records what they answer.
 *
 *   evaluate structure WORDS    i=ROW yo=FLAG y=COUNT room=COUNT want=grad,gradsub,con,row,rowsub,count,sub
 *   evaluate values WORDS       x=V,V,... yo=WEIGHT y=V,V,... rows=I,I,... room=COUNT
 *                               want=obj,grad,con,jac,all,lag,count,sub,hes
 *
 * Words that are missing stand for 0 or a null pointer; of `want` each item is an argument that is not null. jac takes the
 * entries of a row as the structure has them, all asks for every column, the last one first. Arrays are as long as the
 * arguments say, or the task's columns, and whatever is written beyond them is misuse. */
#include "recorder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>

/* ---- Arguments of a line ---- */

using line_words = std::map<std::string, std::string>;

static line_words take_words(const std::string &line)
{
    line_words words;
    std::istringstream in(line);
    std::string word;
    while (in >> word) {
        const size_t sign = word.find('=');
        words[word.substr(0, sign)] = sign == std::string::npos ? "" : word.substr(sign + 1);
    }
    return words;
}

static std::vector<double> numbers_of(const line_words &words, const std::string &name)
{
    std::vector<double> numbers;
    const auto found = words.find(name);
    if (found == words.end()) return numbers;
    std::istringstream in(found->second);
    std::string item;
    while (std::getline(in, item, ',')) numbers.push_back(std::strtod(item.c_str(), nullptr));
    return numbers;
}

static double number_of(const line_words &words, const std::string &name)
{
    const std::vector<double> numbers = numbers_of(words, name);
    return numbers.empty() ? 0.0 : numbers[0];
}

static bool is_wanted(const line_words &words, const std::string &item)
{
    const auto found = words.find("want");
    return found != words.end() && ("," + found->second + ",").find("," + item + ",") != std::string::npos;
}

/* ---- Arrays that know when they are overrun ---- */

template <typename value_type> struct guarded_array {
    std::vector<value_type> values;
    size_t num = 0;
};

static const size_t GUARD_VALUES = 8;
static const unsigned char GUARD_BYTE = 0x5C;

template <typename value_type> static guarded_array<value_type> make_array(int64_t num)
{
    guarded_array<value_type> array;
    array.num = static_cast<size_t>(num);
    array.values.resize(array.num + GUARD_VALUES);
    std::memset(array.values.data(), GUARD_BYTE, array.values.size() * sizeof(value_type));
    return array;
}

/* Null where it is not wanted. */
template <typename value_type> static value_type *given(guarded_array<value_type> *array, bool wanted)
{
    return wanted ? array->values.data() : nullptr;
}

static std::string exact(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

static std::string exact(int32_t value) { return std::to_string(value); }

template <typename value_type> static bool is_untouched(const value_type &value)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(&value);
    return std::all_of(bytes, bytes + sizeof value, [](unsigned char byte) { return byte == GUARD_BYTE; });
}

/* The first `num` values, as far as they were written. */
template <typename value_type>
static std::string shown_part(const char *name, const guarded_array<value_type> &array, int64_t begin, int64_t end)
{
    std::string text;
    for (size_t k = static_cast<size_t>(begin); k < static_cast<size_t>(end) && k < array.num; ++k)
        text += (text.empty() ? "" : " ") + (is_untouched(array.values[k]) ? std::string("?") : exact(array.values[k]));
    for (size_t k = array.num; k < array.values.size(); ++k)
        if (!is_untouched(array.values[k])) {
            record_misuse(std::string("write beyond the end of ") + name);
            break;
        }
    return std::string("; ") + name + " {" + text + "}";
}

template <typename value_type> static std::string shown_all(const char *name, const guarded_array<value_type> &array)
{
    return shown_part(name, array, 0, static_cast<int64_t>(array.num));
}

/* ---- Structure ---- */

static void ask_structure(ZLR_task *task, const line_words &words)
{
    const auto num_var = static_cast<int64_t>(task->c.size());
    const auto room = static_cast<int32_t>(number_of(words, "room"));
    auto numgrad = make_array<int32_t>(1), convali = make_array<int32_t>(1), numrow = make_array<int32_t>(1);
    auto numhes = make_array<int32_t>(1);
    auto gradsub = make_array<int32_t>(num_var), rowsub = make_array<int32_t>(num_var);
    auto subi = make_array<int32_t>(room), subj = make_array<int32_t>(room);
    const int32_t res = task->getsp(
        task->nl_handle, given(&numgrad, is_wanted(words, "grad")), given(&gradsub, is_wanted(words, "gradsub")),
        static_cast<int32_t>(number_of(words, "i")), given(&convali, is_wanted(words, "con")),
        given(&numrow, is_wanted(words, "row")), given(&rowsub, is_wanted(words, "rowsub")),
        static_cast<int32_t>(number_of(words, "yo")), static_cast<int32_t>(number_of(words, "y")), nullptr, room,
        given(&numhes, is_wanted(words, "count")), given(&subi, is_wanted(words, "sub")),
        given(&subj, is_wanted(words, "sub")));
    std::string text = "structure = " + std::to_string(res);
    if (is_wanted(words, "grad")) text += shown_all("grad", numgrad);
    if (is_wanted(words, "gradsub")) text += shown_all("gradsub", gradsub);
    if (is_wanted(words, "con")) text += shown_all("con", convali);
    if (is_wanted(words, "row")) text += shown_all("row", numrow);
    if (is_wanted(words, "rowsub")) text += shown_all("rowsub", rowsub);
    if (is_wanted(words, "count")) text += shown_all("count", numhes);
    if (is_wanted(words, "sub")) text += shown_all("subi", subi) + shown_all("subj", subj);
    record_line(text);
}

/* ---- Values ---- */

/* Entries of the rows' gradients. */
struct jacobian_wish {
    std::vector<int32_t> begin, end, sub;
};

static jacobian_wish wish_for(ZLR_task *task, const std::vector<int32_t> &rows, bool all)
{
    const auto num_var = static_cast<int32_t>(task->c.size());
    jacobian_wish wish;
    for (const int32_t i : rows) {
        std::vector<int32_t> sub(static_cast<size_t>(num_var));
        int32_t num = 0;
        (void)task->getsp(task->nl_handle, nullptr, nullptr, i, nullptr, &num, sub.data(), 0, 0, nullptr, 0, nullptr,
                          nullptr, nullptr);
        /* A row that is not evaluated has no entries; one is asked for all the same. */
        if (num == 0 && num_var > 0) sub[static_cast<size_t>(num++)] = 0;
        if (all) num = num_var;
        wish.begin.push_back(static_cast<int32_t>(wish.sub.size()));
        for (int32_t p = 0; p < num; ++p) wish.sub.push_back(all ? num_var - 1 - p : sub[static_cast<size_t>(p)]);
        wish.end.push_back(static_cast<int32_t>(wish.sub.size()));
    }
    return wish;
}

template <typename value_type> static const value_type *or_null(const std::vector<value_type> &values)
{
    return values.empty() ? nullptr : values.data();
}

/* What the callback is to fill. */
struct value_arrays {
    guarded_array<double> objective, gradval, rows, jac, lag, hes;
    guarded_array<int32_t> numgrad, gradsub, numhes, subi, subj;
};

static std::string shown_values(const line_words &words, const value_arrays &a, const jacobian_wish &wish)
{
    std::string text;
    if (is_wanted(words, "obj")) text += shown_all("obj", a.objective);
    if (is_wanted(words, "grad")) {
        const bool written = shown_all("n", a.numgrad) != "; n {?}";
        const int32_t num = written ? a.numgrad.values[0] : 0;
        text += shown_all("grad", a.numgrad) + shown_part("gradsub", a.gradsub, 0, num) +
                shown_part("gradval", a.gradval, 0, num);
    }
    if (is_wanted(words, "con")) text += shown_all("con", a.rows);
    if (is_wanted(words, "jac") || is_wanted(words, "all"))
        for (size_t k = 0; k < wish.begin.size(); ++k) text += shown_part("jac", a.jac, wish.begin[k], wish.end[k]);
    if (is_wanted(words, "lag")) text += shown_all("lag", a.lag);
    if (is_wanted(words, "count")) text += shown_all("count", a.numhes);
    if (is_wanted(words, "sub")) text += shown_all("subi", a.subi) + shown_all("subj", a.subj);
    if (is_wanted(words, "hes")) text += shown_all("hes", a.hes);
    return text;
}

static void ask_values(ZLR_task *task, const line_words &words)
{
    const auto num_var = static_cast<int64_t>(task->c.size());
    const auto room = static_cast<int32_t>(number_of(words, "room"));
    const std::vector<double> x = numbers_of(words, "x"), y = numbers_of(words, "y"),
                              numbers = numbers_of(words, "rows");
    const std::vector<int32_t> rows(numbers.begin(), numbers.end());
    const bool has_jac = is_wanted(words, "jac") || is_wanted(words, "all");
    const jacobian_wish wish = wish_for(task, rows, is_wanted(words, "all"));
    value_arrays a = {make_array<double>(1),
                      make_array<double>(num_var),
                      make_array<double>(static_cast<int64_t>(rows.size())),
                      make_array<double>(static_cast<int64_t>(wish.sub.size())),
                      make_array<double>(num_var),
                      make_array<double>(room),
                      make_array<int32_t>(1),
                      make_array<int32_t>(num_var),
                      make_array<int32_t>(1),
                      make_array<int32_t>(room),
                      make_array<int32_t>(room)};
    const int32_t none = 0;
    const int32_t res = task->getva(
        task->nl_handle, or_null(x), number_of(words, "yo"), or_null(y), given(&a.objective, is_wanted(words, "obj")),
        given(&a.numgrad, is_wanted(words, "grad")), given(&a.gradsub, is_wanted(words, "grad")),
        given(&a.gradval, is_wanted(words, "grad")), static_cast<int32_t>(rows.size()), or_null(rows),
        given(&a.rows, is_wanted(words, "con")), has_jac ? (rows.empty() ? &none : wish.begin.data()) : nullptr,
        has_jac ? (rows.empty() ? &none : wish.end.data()) : nullptr, has_jac ? or_null(wish.sub) : nullptr,
        given(&a.jac, has_jac), given(&a.lag, is_wanted(words, "lag")), room,
        given(&a.numhes, is_wanted(words, "count")), given(&a.subi, is_wanted(words, "sub")),
        given(&a.subj, is_wanted(words, "sub")), given(&a.hes, is_wanted(words, "hes")));
    record_line("values = " + std::to_string(res) + shown_values(words, a, wish));
}

void run_evaluations(ZLR_task *task, const char *when)
{
    for (const std::string &line : script_list(when)) {
        if (task->getva == nullptr) {
            record_line("no callbacks");
            return;
        }
        const line_words words = take_words(line);
        words.count("structure") != 0 ? ask_structure(task, words) : ask_values(task, words);
    }
}
