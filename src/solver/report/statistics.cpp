/* statistics.cpp - see statistics.h. */
#include "solver/report/statistics.h"

#include "solver/io/io.h"
#include "solver/report/clock.h"
#include "solver/report/reported.h"
#include "solver/report/result_values.h"
#include "solver/report/words.h"

#include <cerrno>
#include <cstring>

/* ---- The line ---- */

static json times(const ZLR_task *task)
{
    const run_record *run = &task->run;
    return {{"read", result_read_time(task)},
            {"start", run->time_start_s},
            {"solve", run->time_solve_s},
            {"check", run->time_check_s},
            {"total", run->time_total_s}};
}

/* A number as a number, a word as a word. */
static json param_value(const param_set *params, const param_row *row)
{
    if (row->param_class == ZLR_PAR_DOUBLE && row->words == nullptr)
        return result_number(param_dou(params, row->number));
    if (row->param_class == ZLR_PAR_INT && row->words == nullptr) return param_int(params, row->number);
    return param_value_text(params, row);
}

static json changed_params(const param_set *params)
{
    int32_t num = 0;
    const param_row *table = param_table(&num);
    json changed = json::object();
    for (const param_row *row = table; row != table + num; row++)
        if (!param_is_default(params, row)) changed[row->name] = param_value(params, row);
    return changed;
}

static json line_of(const ZLR_task *task)
{
    json line;
    line["schema"] = statistics_schema;
    line["when"] = clock_text(task->run.ended_ms);
    line["version"] = result_version();
    result_put_problem(&line, task);
    line["problem_type"] = result_word(words_problem_type(model_problem_type(task->problem.get())));
    result_put_answer(&line, task, reported_kind(task));
    result_put_run(&line, task, task->run.return_code);
    line["time"] = times(task);
    line["parameters"] = changed_params(&task->params);
    return line;
}

std::string statistics_line(const ZLR_task *task)
{
    json line = line_of(task);
    result_keep_fields(&line, param_str(&task->params, SPAR_STAT_FIELDS));
    /* Names may hold any bytes; JSON may not. */
    return line.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

/* ---- The file ---- */

static int32_t append_to_file(ZLR_task *task, const std::string &text)
{
    const io_context io = {param_str(&task->params, SPAR_STAT_FILE), &task->params, &task->streams, task->env->sys};
    errno = 0;
    const int32_t res = file_append(io.sys, io.file, io_sink_options_replacing(&io), text);
    if (res == ZLR_RES_OK) return res;
    return io_error(&io, res, 0, "statistics cannot be appended%s%s", errno != 0 ? ": " : "",
                    errno != 0 ? std::strerror(errno) : "");
}

/* Writes the lines that wait, in pieces that one write can take; those that are in the file do not wait any more. */
static int32_t write_waiting(ZLR_task *task)
{
    constexpr size_t piece_bytes = 65536;
    std::vector<std::string> *waiting = &task->stat.waiting;

    while (!waiting->empty()) {
        std::string piece = waiting->front();
        size_t num = 1;
        while (num < waiting->size() && piece.size() + (*waiting)[num].size() <= piece_bytes)
            piece += (*waiting)[num++];
        const int32_t res = append_to_file(task, piece);
        if (res != ZLR_RES_OK) return res;
        waiting->erase(waiting->begin(), waiting->begin() + static_cast<std::ptrdiff_t>(num));
    }
    return ZLR_RES_OK;
}

/* The name is needed; a field that there is not is told. */
static int32_t check_params(ZLR_task *task)
{
    const char *fields = param_str(&task->params, SPAR_STAT_FIELDS);
    if (fields[0] != '\0') result_check_fields(line_of(task), fields, "STAT_FIELDS", &task->streams);
    if (param_str(&task->params, SPAR_STAT_FILE)[0] != '\0') return ZLR_RES_OK;
    streams_write(&task->streams, ZLR_STREAM_ERR, "STAT_FILE names no file for the statistics.\n");
    return ZLR_RES_ERR_FILE_OPEN;
}

/* ---- Collecting ---- */

int32_t statistics_start(ZLR_task *task)
{
    const int32_t res = check_params(task);
    if (res == ZLR_RES_OK) task->stat.is_collecting = true;
    return res;
}

/* By STAT_EVENTS. */
static bool is_wanted(const ZLR_task *task)
{
    const int32_t events = param_int(&task->params, IPAR_STAT_EVENTS);
    return events == STAT_EVENTS_ALL || (events == STAT_EVENTS_ANSWERED) == (task->run.return_code == ZLR_RES_OK);
}

void statistics_note(ZLR_task *task)
{
    stat_record *stat = &task->stat;

    stat->last_waits = stat->last_is_written = false;
    if (!stat->is_collecting || !is_wanted(task)) return;
    stat->waiting.push_back(statistics_line(task));
    stat->last_waits = true;
}

int32_t statistics_stop(ZLR_task *task)
{
    stat_record *stat = &task->stat;

    int32_t res = check_params(task);
    if (res == ZLR_RES_OK) res = write_waiting(task);
    if (res != ZLR_RES_OK) return res;
    stat->is_collecting = false;
    stat->last_is_written = stat->last_is_written || stat->last_waits;
    stat->last_waits = false;
    return ZLR_RES_OK;
}

int32_t statistics_append(ZLR_task *task)
{
    stat_record *stat = &task->stat;

    int32_t res = check_params(task);
    if (res != ZLR_RES_OK || stat->last_is_written) return res;
    if (!stat->last_waits && !task->run.ran) {
        streams_write(&task->streams, ZLR_STREAM_ERR, "There is no optimisation to write statistics about.\n");
        return ZLR_RES_ERR_NO_SOLUTION;
    }
    res = append_to_file(task, stat->last_waits ? stat->waiting.back() : statistics_line(task));
    if (res != ZLR_RES_OK) return res;
    if (stat->last_waits) stat->waiting.pop_back();
    stat->last_waits = false;
    stat->last_is_written = true;
    return ZLR_RES_OK;
}

void statistics_warn_of_loss(ZLR_task *task)
{
    if (task->stat.waiting.empty()) return;
    streams_printf(&task->streams, ZLR_STREAM_WRN,
                   "Statistics were collected and not written (lines: %zu); -stat stop writes them.\n",
                   task->stat.waiting.size());
}
