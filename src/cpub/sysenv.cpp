/* sysenv.cpp - the environment: its life, allocation through its manager, and the end of the process by a fatal report.
 * The path of the library is in sysenv_posix.cpp and sysenv_win32.cpp. */
#include "cpub/sysenv.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

/* ---- The C library as allocator ---- */

static void *plain_malloc(void *handle, uint64_t size)
{
    (void)handle;
    return std::malloc(size);
}

static void *plain_calloc(void *handle, uint64_t count, uint64_t size)
{
    (void)handle;
    return std::calloc(count, size);
}

static void *plain_realloc(void *handle, void *block, uint64_t size)
{
    (void)handle;
    return std::realloc(block, size);
}

static void plain_free(void *handle, void *block)
{
    (void)handle;
    std::free(block);
}

static sysenv_allocator complete_allocator(const sysenv_allocator *given)
{
    sysenv_allocator full = {};
    if (given != nullptr) full = *given;
    if (full.mallocfunc == nullptr) full.mallocfunc = plain_malloc;
    if (full.callocfunc == nullptr) full.callocfunc = plain_calloc;
    if (full.reallocfunc == nullptr) full.reallocfunc = plain_realloc;
    if (full.freefunc == nullptr) full.freefunc = plain_free;
    return full;
}

/* ---- Creation and deletion ---- */

sysenv *sysenv_create(const char *file, int32_t line, int32_t debug, const sysenv_allocator *allocator)
{
    const sysenv_allocator use = complete_allocator(allocator);
    sysenv *sys = static_cast<sysenv *>(use.mallocfunc(use.handle, sizeof(sysenv)));
    if (sys == nullptr) return nullptr;
    std::memset(sys, 0, sizeof *sys);
    sys->memman = memman_create(file, line, nullptr, debug, use.handle, use.mallocfunc, use.callocfunc, use.reallocfunc,
                                use.freefunc);
    if (sys->memman == nullptr) {
        use.freefunc(use.handle, sys);
        return nullptr;
    }
    /* A fresh manager's hooks and level are not to be relied on. */
    memman_setfatalfunc(sys->memman, nullptr, nullptr);
    memman_setmsgfunc(sys->memman, nullptr, nullptr);
    memman_setlevels(sys->memman, 0, 0);
    sys->fatal = &sys->own_fatal;
    return sys;
}

uint64_t sysenv_delete(const char *file, int32_t line, sysenv **sys)
{
    if (sys == nullptr || *sys == nullptr) return 0;
    sysenv *old = *sys;
    /* Read out first. The record itself goes behind the manager, whose hooks may still use it in the leak report. */
    void *const handle = old->memman->allochandle;
    const memman_freefunc freefunc = old->memman->freefunc;
    const uint64_t num_left = memman_delete(file, line, &old->memman);
    freefunc(handle, old);
    *sys = nullptr;
    return num_left;
}

/* ---- Allocation ---- */

void *sysenv_mallocdbg(sysenv *sys, const char *file, int32_t line, uint64_t count, uint64_t size)
{
    return memman_malloc(file, line, sys->memman, count, size);
}

void *sysenv_callocdbg(sysenv *sys, const char *file, int32_t line, uint64_t count, uint64_t size)
{
    return memman_calloc(file, line, sys->memman, count, size);
}

void sysenv_freedbg(sysenv *sys, const char *file, int32_t line, void *block)
{
    if (block == sys)
        sysenv_fatal(sys, file, line, "Trying to free the sysenv. sys: %p == buffer: %p", static_cast<void *>(sys),
                     block);
    memman_free(file, line, sys->memman, block);
}

void *sysenv_aligned_mallocdbg(sysenv *sys, const char *file, int32_t line, uint64_t size, uint64_t alignment)
{
    return memman_aligned_malloc(file, line, sys->memman, size, alignment);
}

void sysenv_aligned_freedbg(sysenv *sys, const char *file, int32_t line, void *block)
{
    memman_aligned_free(file, line, sys->memman, block);
}

/* ---- Reports ---- */

/* Formats into a text that is cut to its room, terminator included, and always terminated. Set to empty first, for a
 * format that the C library refuses. */
static void format_cut(size_t room, char *text, const char *format, va_list args)
{
    text[0] = 0;
    (void)sysenv_vsnprintf(room, text, format, args);
    text[room - 1] = 0;
}

void sysenv_broadcast(sysenv *sys, const char *format, ...)
{
    char text[1048];
    va_list args;
    va_start(args, format);
    format_cut(sizeof text, text, format, args);
    va_end(args);
    for (int32_t i = 0; i < SYSENV_NUM_STREAMS; ++i)
        if (sys->streamfunc[i] != nullptr) sys->streamfunc[i](sys->streamhandle[i], text);
}

/* What was told must not stay in a buffer: aborting writes none out. */
[[noreturn]] static void flush_and_abort(void)
{
    (void)std::fflush(stdout);
    std::abort();
}

static const char REPORT_HEAD[] = "\n\nFatal error";
static const char REPORT_FILE[] = "\nFile : %s";
static const char REPORT_LINE[] = "\nLine : %d";
static const char REPORT_TEXT[] = "\nMsg. : %s\n";

void sysenv_fatal(sysenv *sys, const char *file, int32_t line, const char *format, ...)
{
    char message[2048];
    va_list args;
    va_start(args, format);
    format_cut(sizeof message, message, format, args);
    va_end(args);

    if (sys == nullptr) {
        sysenv_printf(REPORT_HEAD);
        sysenv_printf(REPORT_FILE, file);
        sysenv_printf(REPORT_LINE, line);
        sysenv_printf(REPORT_TEXT, message);
        flush_and_abort();
    }
    if (sys->fatal == nullptr) std::abort();
    if (sys->fatal->func != nullptr) sys->fatal->func(sys->fatal->handle, file, line, message, -1);
    sysenv_broadcast(sys, REPORT_HEAD);
    sysenv_broadcast(sys, REPORT_FILE, file);
    sysenv_broadcast(sys, REPORT_LINE, line);
    sysenv_broadcast(sys, REPORT_TEXT, message);
    flush_and_abort();
}

void sysenv_assert(sysenv *sys, const char *file, int32_t line, int32_t condition)
{
    if (condition != 0) return;
    sysenv_fatal(sys, file, line, "Assertion failed at %s(%d).", file, line);
}

void sysenv_assertfail(const char *expression, const char *file, int32_t line)
{
    sysenv_printf("Assertion '%s' failed at %s:%d.\n", expression, file, line);
    flush_and_abort();
}
