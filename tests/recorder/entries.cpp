/* entries.cpp - the entries that the program's file mode uses, and those whose answers a script can set. */
#include "recorder.h"

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <unistd.h>

/* ---- Version and codes ---- */

int32_t ZLR_getversion(int32_t *major, int32_t *minor, int32_t *revision, int32_t *build)
{
    *major = 8;
    *minor = 1;
    *revision = 2;
    *build = 3;
    return record_result("ZLR_getversion", "");
}

int32_t ZLR_getcodedesc(int32_t code, char *symbol, char *text)
{
    const int32_t res = record_result("ZLR_getcodedesc", shown(code) + (text != nullptr ? ", text" : ", null"));
    if (symbol != nullptr) std::snprintf(symbol, 1024, "NAME_%d", code);
    if (text != nullptr) std::snprintf(text, 1024, "text of %d", code);
    return res;
}

int32_t ZLR_getresponseclass(int32_t code, int32_t *response_class)
{
    int32_t by_range = ZLR_CLASS_ERROR;
    if (code == 0) by_range = ZLR_CLASS_OK;
    if (code > 0 && code < 1000) by_range = ZLR_CLASS_WARNING;
    if (code >= 10000) by_range = ZLR_CLASS_TERMINATION;
    const int32_t res = answer("ZLR_getresponseclass", code);
    if (res == 0) *response_class = static_cast<int32_t>(script_number("class", -1, by_range));
    return res;
}

/* ---- Environment and task ---- */

int32_t ZLR_makeenv(ZLR_env **env, const char *dbgfile)
{
    const int32_t res = answer("ZLR_makeenv", dbgfile);
    *env = res == 0 ? handle_make_env() : nullptr;
    return res;
}

int32_t ZLR_deleteenv(ZLR_env **env)
{
    const int32_t res = answer("ZLR_deleteenv", *env);
    if (*env != nullptr) handle_end(*env);
    *env = nullptr;
    return res;
}

int32_t ZLR_makeemptytask(ZLR_env *env, ZLR_task **task)
{
    const int32_t res = answer("ZLR_makeemptytask", env);
    *task = res == 0 ? handle_make_task(env) : nullptr;
    return res;
}

int32_t ZLR_deletetask(ZLR_task **task)
{
    const int32_t res = answer("ZLR_deletetask", *task);
    if (*task != nullptr) handle_end(*task);
    *task = nullptr;
    return res;
}

int32_t ZLR_getenv(ZLR_task *task, ZLR_env **env)
{
    *env = task->env;
    return answer("ZLR_getenv", task);
}

int32_t ZLR_putlicensepath(ZLR_env *env, const char *path) { return answer("ZLR_putlicensepath", env, path); }

int32_t ZLR_putlicensecode(ZLR_env *env, const int32_t *code)
{
    return record_result("ZLR_putlicensecode", shown(env) + ", " + shown_codes(code));
}

int32_t ZLR_putlicensewait(ZLR_env *env, int32_t wait) { return answer("ZLR_putlicensewait", env, wait); }
int32_t ZLR_putlicensedebug(ZLR_env *env, int32_t debug) { return answer("ZLR_putlicensedebug", env, debug); }

/* ---- Streams ---- */

static void send(const linked_stream *stream, const char *text)
{
    if (stream->func != nullptr) stream->func(stream->handle, text);
}

/* What goes to a stream of a task goes to its log as well. */
static void send_to_task(const ZLR_task *task, int32_t stream, const char *text)
{
    if (task == nullptr) return;
    if (stream != ZLR_STREAM_LOG) send(&task->streams[stream], text);
    send(&task->streams[ZLR_STREAM_LOG], text);
}

/* Reports send their name in brackets, so that the order of what the console shows can be seen. */
static int32_t report(const char *entry, ZLR_task *task, int32_t stream, const std::string &more = "")
{
    const int32_t res = record_result(entry, shown(task) + ", " + shown(stream) + more);
    send_to_task(task, stream, (std::string("[") + entry + "]\n").c_str());
    return res;
}

int32_t ZLR_linkfunctoenvstream(ZLR_env *env, int32_t stream, void *handle, ZLR_streamfunc func)
{
    env->streams[stream] = {func, handle};
    return record_result("ZLR_linkfunctoenvstream",
                         shown_list(env, stream) + (handle != nullptr ? ", handle" : ", null"));
}

int32_t ZLR_linkfunctotaskstream(ZLR_task *task, int32_t stream, void *handle, ZLR_streamfunc func)
{
    task->streams[stream] = {func, handle};
    return record_result("ZLR_linkfunctotaskstream",
                         shown_list(task, stream) + (handle != nullptr ? ", handle" : ", null"));
}

int32_t ZLR_linkfiletotaskstream(ZLR_task *task, int32_t stream, const char *filename, int32_t append)
{
    return answer("ZLR_linkfiletotaskstream", task, stream, filename, append);
}

int32_t ZLR_echointro(ZLR_env *env, int32_t full)
{
    const int32_t res = answer("ZLR_echointro", env, full);
    send(&env->streams[ZLR_STREAM_MSG], "[ZLR_echointro]\n");
    return res;
}

int32_t ZLR_echotask(ZLR_task *task, int32_t stream, const char *format, ...)
{
    char text[4096];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    const int32_t res = answer("ZLR_echotask", task, stream, static_cast<const char *>(text));
    send_to_task(task, stream, text);
    return res;
}

/* ---- Memory ---- */

static void check_source(const char *entry, const char *file, int32_t line)
{
    if (file == nullptr || std::strcmp(file, "src/zelor/zelorbin") != 0 || line <= 0) {
        record_misuse(std::string("source of ") + entry + " is " + shown(file) + ":" + shown(line));
    }
}

static void *record_make(const char *entry, const void *owner, const std::string &name, uint64_t count, uint64_t size)
{
    void *block = memory_make(owner, count * size, true);
    record_call(entry, name + ", " + shown_list(count, size));
    return block;
}

static void record_free(const char *entry, const void *owner, const std::string &name, void *block)
{
    record_call(entry, name + ", " + shown(static_cast<const void *>(block)));
    memory_free(entry, owner, block);
}

void *ZLR_callocenv(ZLR_env *env, uint64_t count, uint64_t size)
{
    return record_make("ZLR_callocenv", env, shown(env), count, size);
}

void *ZLR_callocdbgenv(ZLR_env *env, uint64_t count, uint64_t size, const char *file, int32_t line)
{
    check_source("ZLR_callocdbgenv", file, line);
    return record_make("ZLR_callocdbgenv", env, shown(env), count, size);
}

void *ZLR_calloctask(ZLR_task *task, uint64_t count, uint64_t size)
{
    return record_make("ZLR_calloctask", task, shown(task), count, size);
}

void *ZLR_callocdbgtask(ZLR_task *task, uint64_t count, uint64_t size, const char *file, int32_t line)
{
    check_source("ZLR_callocdbgtask", file, line);
    return record_make("ZLR_callocdbgtask", task, shown(task), count, size);
}

void ZLR_freeenv(ZLR_env *env, void *block) { record_free("ZLR_freeenv", env, shown(env), block); }
void ZLR_freetask(ZLR_task *task, void *block) { record_free("ZLR_freetask", task, shown(task), block); }

void ZLR_freedbgenv(ZLR_env *env, void *block, const char *file, int32_t line)
{
    check_source("ZLR_freedbgenv", file, line);
    record_free("ZLR_freedbgenv", env, shown(env), block);
}

void ZLR_freedbgtask(ZLR_task *task, void *block, const char *file, int32_t line)
{
    check_source("ZLR_freedbgtask", file, line);
    record_free("ZLR_freedbgtask", task, shown(task), block);
}

char *ZLR_strduptask(ZLR_task *task, const char *text)
{
    char *copy = static_cast<char *>(memory_make(task, std::strlen(text) + 1, true));
    record_call("ZLR_strduptask", shown_list(task, text));
    return copy != nullptr ? std::strcpy(copy, text) : nullptr;
}

/* ---- Parameters ---- */

int32_t ZLR_putstrparam(ZLR_task *task, int32_t param, const char *value)
{
    const int32_t res = answer("ZLR_putstrparam", task, param, value);
    if (res == 0) script_put_text(param, value);
    return res;
}

int32_t ZLR_getstrparamal(ZLR_task *task, int32_t param, int32_t extra, char **value)
{
    const int32_t res = answer("ZLR_getstrparamal", task, param, extra);
    *value = nullptr;
    if (res != 0) return res;
    const std::string text = script_text(param);
    *value = static_cast<char *>(memory_make(task, text.size() + 1 + static_cast<uint64_t>(extra), false));
    std::memcpy(*value, text.c_str(), text.size() + 1);
    return res;
}

int32_t ZLR_getintparam(ZLR_task *task, int32_t param, int32_t *value)
{
    const int32_t res = answer("ZLR_getintparam", task, param);
    if (res == 0) *value = static_cast<int32_t>(script_number("int", param, 0));
    return res;
}

int32_t ZLR_getdouparam(ZLR_task *task, int32_t param, double *value)
{
    const int32_t res = answer("ZLR_getdouparam", task, param);
    double otherwise = 0.0;
    if (param == ZLR_DPAR_DATA_TOL_COEF) otherwise = 1e-12;
    if (param == ZLR_DPAR_BOUND_INFINITE) otherwise = 1e16;
    if (res == 0) *value = script_real("dou", param, otherwise);
    return res;
}

int32_t ZLR_putintparam(ZLR_task *task, int32_t param, int32_t value)
{
    const int32_t res = answer("ZLR_putintparam", task, param, value);
    if (res == 0) script_put_number("int", param, value);
    return res;
}

/* As many names in each class as the library has; in an order of their own. */
int32_t ZLR_getparamname(ZLR_task *task, int32_t param_class, int32_t param, char *name)
{
    static const struct {
        const char *name;
        int32_t num;
    } classes[] = {{"", 0}, {"ZETA_DOU", 70}, {"ALPHA_INT", 173}, {"MID_STR", 24}};
    const int32_t res = answer("ZLR_getparamname", task, param_class, param);
    if (res != 0) return res;
    if (param_class < 1 || param_class > 3) return ZLR_RES_ERR_PARAM_NAME;
    if (param < 0 || param >= classes[param_class].num) return ZLR_RES_ERR_PARAM_NAME;
    std::snprintf(name, 1024, "%s_%d", classes[param_class].name, param);
    return res;
}

int32_t ZLR_printparam(ZLR_task *task) { return answer("ZLR_printparam", task); }

/* ---- Optimiser ---- */

int32_t ZLR_putcallbackfunc(ZLR_task *task, ZLR_callbackfunc func, void *handle)
{
    task->callback = func;
    task->callback_handle = handle;
    return record_result("ZLR_putcallbackfunc", shown(task) + (handle != nullptr ? ", handle" : ", null"));
}

int32_t ZLR_optimize(ZLR_task *task)
{
    const int32_t res = answer("ZLR_optimize", task);
    if (res == 0) run_evaluations(task, "evaluate");
    const int64_t num_polls = script_number("poll", -1, 0);
    const int64_t pause_ms = script_number("pause", -1, 0);
    for (int64_t poll = 1; poll <= num_polls && task->callback != nullptr; ++poll) {
        const int64_t number = script_number("raisepoll", poll, 0);
        if (number != 0) (void)std::raise(static_cast<int>(number));
        if (pause_ms > 0) {
            if (poll == 1) send(&task->streams[ZLR_STREAM_LOG], "[optimizer starts]\n");
            usleep(static_cast<useconds_t>(pause_ms * 1000));
        }
        const ZLR_progress progress = {};
        const int32_t stop = task->callback(task, task->callback_handle, &progress);
        if (stop != 0) record_line("stop asked for at poll " + std::to_string(poll));
        if (stop != 0 && !script_number("stubborn", -1, 0)) return res != 0 ? res : ZLR_RES_TRM_USER_STOP;
    }
    return res;
}

/* ---- Subproblems ---- */

int32_t ZLR_getinfeasiblesubproblem(ZLR_task *task, int32_t kind, ZLR_task **subproblem)
{
    const int32_t res = answer("ZLR_getinfeasiblesubproblem", task, kind);
    if (res == 0) *subproblem = handle_make_task(task->env);
    return res;
}

/* ---- Reports ---- */

int32_t ZLR_readsummary(ZLR_task *task, int32_t stream) { return report("ZLR_readsummary", task, stream); }
int32_t ZLR_solutionsummary(ZLR_task *task, int32_t stream) { return report("ZLR_solutionsummary", task, stream); }
int32_t ZLR_optimizersummary(ZLR_task *task, int32_t stream) { return report("ZLR_optimizersummary", task, stream); }
int32_t ZLR_analyzeproblem(ZLR_task *task, int32_t stream) { return report("ZLR_analyzeproblem", task, stream); }
int32_t ZLR_sensitivityreport(ZLR_task *task, int32_t stream) { return report("ZLR_sensitivityreport", task, stream); }

int32_t ZLR_analyzesolution(ZLR_task *task, int32_t stream, int32_t kind)
{
    return report("ZLR_analyzesolution", task, stream, ", " + shown(kind));
}
