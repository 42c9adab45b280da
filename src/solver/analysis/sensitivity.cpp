/* sensitivity.cpp - sensitivity of a linear task: arrays for callers, and the report. See analysis.h. */
#include "solver/analysis/analysis.h"

#include "solver/analysis/sensitivity_file.h"
#include "solver/io/io.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

/* The optimal solution that ranges start from; a basic one, if there is one. */
static int32_t find_optimal(ZLR_task *task, const solution **sol)
{
    const model *m = task->problem.get();
    if (model_problem_type(m) != ZLR_PROBTYPE_LO || model_num_int(m) > 0) {
        streams_write(&task->streams, ZLR_STREAM_ERR,
                      "Sensitivity is for linear problems without integer columns: this one is not.\n");
        return ZLR_RES_ERR_ARGUMENT;
    }
    for (const int32_t kind : {ZLR_SOL_BAS, ZLR_SOL_ITR}) {
        *sol = &task->sol[kind];
        if ((*sol)->defined && ((*sol)->solsta == ZLR_SOLSTA_OPTIMAL || (*sol)->solsta == ZLR_SOLSTA_NEAR_OPTIMAL))
            return ZLR_RES_OK;
    }
    streams_write(&task->streams, ZLR_STREAM_ERR, "Sensitivity needs an optimal solution, and there is none.\n");
    return ZLR_RES_ERR_NO_SOLUTION;
}

static int32_t compute(ZLR_task *task, const std::vector<range_item> &items, ranging *out)
{
    const solution *sol = nullptr;
    std::string message;
    int32_t code = find_optimal(task, &sol);
    if (code != ZLR_RES_OK) return code;
    code = ranging_compute(task, sol, items, out, &message);
    if (code == ZLR_RES_ERR_ENGINE)
        streams_printf(&task->streams, ZLR_STREAM_ERR, "No sensitivity: %s.\n", message.c_str());
    return code;
}

/* ---- arrays */

static int32_t add_items(const model *m, range_what what, int32_t num, const int32_t *sub, const int32_t *mark,
                         std::vector<range_item> *items)
{
    const int32_t size = what == RANGE_ROW ? m->num_con : m->num_var;
    if (num < 0) return ZLR_RES_ERR_ARGUMENT;
    if (num > 0 && (sub == nullptr || (mark == nullptr && what != RANGE_COST))) return ZLR_RES_ERR_NULL_POINTER;
    for (int32_t k = 0; k < num; k++) {
        if (sub[k] < 0 || sub[k] >= size) return ZLR_RES_ERR_INDEX;
        if (mark != nullptr && mark[k] != 0 && mark[k] != 1) return ZLR_RES_ERR_ARGUMENT;
        items->push_back({what, sub[k], mark != nullptr && mark[k] == 1});
    }
    return ZLR_RES_OK;
}

static void put_results(const range_result *results, int32_t num, const sensitivity_arrays *arrays)
{
    for (int32_t k = 0; k < num; k++) {
        if (arrays->left_price != nullptr) arrays->left_price[k] = results[k].left_price;
        if (arrays->right_price != nullptr) arrays->right_price[k] = results[k].right_price;
        if (arrays->left_range != nullptr) arrays->left_range[k] = results[k].left_range;
        if (arrays->right_range != nullptr) arrays->right_range[k] = results[k].right_range;
    }
}

static int32_t compute_whole(ZLR_task *task, const std::vector<range_item> &items, ranging *out)
{
    const int32_t code = compute(task, items, out);
    if (code != ZLR_RES_OK) return code;
    for (const range_result &result : out->results)
        if (!result.is_known) {
            streams_write(&task->streams, ZLR_STREAM_ERR, "No sensitivity: an engine's answer misses the check.\n");
            return ZLR_RES_ERR_ENGINE;
        }
    return ZLR_RES_OK;
}

int32_t primal_sensitivity(ZLR_task *task, const sensitivity_sides *rows, const sensitivity_sides *columns)
{
    std::vector<range_item> items;
    ranging out;
    const model *m = task->problem.get();
    int32_t code = add_items(m, RANGE_ROW, rows->num, rows->sub, rows->mark, &items);
    if (code == ZLR_RES_OK) code = add_items(m, RANGE_COLUMN, columns->num, columns->sub, columns->mark, &items);
    if (code == ZLR_RES_OK) code = compute_whole(task, items, &out);
    if (code != ZLR_RES_OK) return code;
    put_results(out.results.data(), rows->num, &rows->out);
    put_results(out.results.data() + rows->num, columns->num, &columns->out);
    return ZLR_RES_OK;
}

int32_t dual_sensitivity(ZLR_task *task, int32_t num, const int32_t *sub, const sensitivity_arrays *arrays)
{
    std::vector<range_item> items;
    ranging out;
    int32_t code = add_items(task->problem.get(), RANGE_COST, num, sub, nullptr, &items);
    if (code == ZLR_RES_OK) code = compute_whole(task, items, &out);
    if (code == ZLR_RES_OK) put_results(out.results.data(), num, arrays);
    return code;
}

/* ---- the report */

static constexpr size_t name_width = 14;

/* How numbers are written: right-aligned, with room for a sign, a point and an exponent. */
struct number_form {
    int digits, width;
};

static number_form form_of(const param_set *params)
{
    constexpr int least_width = 11;
    const int digits = param_int(params, IPAR_SENSITIVITY_DIGITS);
    return {digits, std::max(least_width, digits + 6)};
}

static std::string number(const number_form *form, double value)
{
    if (std::isinf(value)) return text_format(" %*s", form->width, value > 0 ? "inf" : "-inf");
    return text_format(" %*.*g", form->width, form->digits, value == 0.0 ? 0.0 : value);
}

static double value_of(const model *m, const range_item *item)
{
    const auto k = static_cast<size_t>(item->index);
    if (item->what == RANGE_COST) return m->c[k];
    if (item->what == RANGE_ROW) return item->is_upper ? m->con_upper[k] : m->con_lower[k];
    return item->is_upper ? m->var_upper[k] : m->var_lower[k];
}

static const char *side_word(const model *m, const range_item *item)
{
    const auto k = static_cast<size_t>(item->index);
    if (item->what == RANGE_COST) return "";
    const bool is_row = item->what == RANGE_ROW;
    if ((is_row ? m->con_lower : m->var_lower)[k] == (is_row ? m->con_upper : m->var_upper)[k]) return "fixed";
    return item->is_upper ? "upper" : "lower";
}

static std::string item_line(const model *m, const number_form *form, const range_item *item,
                             const range_result *result)
{
    const double value = value_of(m, item);
    const std::string name = item->what == RANGE_ROW ? names_shown(&m->con_names, item->index, 'c')
                                                     : names_shown(&m->var_names, item->index, 'x');
    std::string line = text_format(" %-5s", side_word(m, item)) + number(form, value);
    if (!result->is_known)
        line += " not known";
    else
        for (const double shown :
             {result->left_price, result->right_price, value + result->left_range, value + result->right_range})
            line += number(form, shown);
    line += "\n";
    if (name.size() > name_width) return name + "\n" + std::string(name_width, ' ') + line;
    return name + std::string(name_width - name.size(), ' ') + line;
}

static const char *const titles[] = {
    "\nRows: what one unit more of a side is worth\n",
    "\nBounds: what one unit more of a bound is worth\n",
    "\nCosts: what one unit more of a cost makes\n",
};

static std::string degeneracy_text(const ranging *found)
{
    std::string text;
    if (found->num_primal_degenerate > 0)
        text += "  Degenerate: " + std::to_string(found->num_primal_degenerate) +
                " basic rows or columns sit on a bound, so that prices can\n  differ below and above.\n";
    if (found->num_dual_degenerate > 0)
        text += "  Other optimal points can exist: " + std::to_string(found->num_dual_degenerate) +
                " rows or columns off the basis have a price\n  of 0.\n";
    return text;
}

static std::string report_text(const ZLR_task *task, const std::vector<range_item> &items, const ranging *found)
{
    const number_form form = form_of(&task->params);
    const model *m = task->problem.get();
    std::string text =
        "\nSensitivity of '" + m->name + "', " + (m->sense == ZLR_SENSE_MAX ? "maximised" : "minimised") + " to ";
    text += text_format("%.*g\n", std::max(10, form.digits), found->objective) + degeneracy_text(found);
    std::string line = text_format("%-14s %-5s", "Name", "Side");
    for (const char *title : {"Value", "Price below", "above", "From", "Till"})
        line += text_format(" %*s", form.width, title);
    line += "\n";
    for (const range_what what : {RANGE_ROW, RANGE_COLUMN, RANGE_COST}) {
        bool any = false;
        for (size_t k = 0; k < items.size(); k++) {
            if (items[k].what != what) continue;
            if (!any) text += std::string(titles[what]) + line;
            any = true;
            text += item_line(m, &form, &items[k], &found->results[k]);
        }
    }
    return text;
}

int32_t sensitivity_report(ZLR_task *task, int32_t stream)
{
    const char *input = param_str(&task->params, SPAR_SENSITIVITY_FILE);
    const char *target = param_str(&task->params, SPAR_SENSITIVITY_RES_FILE);
    std::vector<range_item> items;
    ranging found;

    if (input[0] != '\0') {
        const io_context io = {input, &task->params, &task->streams, task->env->sys};
        const int32_t read = sensitivity_file_read(&io, task->problem.get(), &items);
        if (read != ZLR_RES_OK) return read;
    } else {
        const bool wanted[] = {param_int(&task->params, IPAR_SENSITIVITY_ROWS) != 0,
                               param_int(&task->params, IPAR_SENSITIVITY_BOUNDS) != 0,
                               param_int(&task->params, IPAR_SENSITIVITY_COSTS) != 0};
        items = sensitivity_all_items(task->problem.get(), wanted);
    }
    const int32_t code = compute(task, items, &found);
    if (code != ZLR_RES_OK && code != ZLR_RES_TRM_USER_STOP && code != ZLR_RES_TRM_TIME_LIMIT) return code;
    const std::string text = report_text(task, items, &found);
    streams_write(&task->streams, stream, text.c_str());
    if (target[0] == '\0') return code;
    const io_context io = {target, &task->params, &task->streams, task->env->sys};
    errno = 0;
    const int32_t written = sink_whole_file(io.sys, target, io_sink_options_replacing(&io), text);
    if (written == ZLR_RES_OK) return code;
    return io_error(&io, written, 0, "the sensitivity report cannot be written%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}
