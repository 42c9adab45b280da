/* memman_trace.cpp - all that the manager tells: the emit rule, the echo file, trace lines, and the two reports that
 * end the process. Texts are made on the stack: they must get through when the heap is damaged or full. */
#include "cpub/memman.h"

#include "cpub/sysformat.h"
#include "memman_internal.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

/* ---- Emit ---- */

/* Formats into a buffer of `capacity` bytes, cut and always terminated. The formatter gets one byte less: it does
 * not terminate a text that fills its room. */
static void format_text(size_t capacity, char *text, const char *format, va_list args)
{
    text[0] = 0;
    (void)sysenv_vsnprintf(capacity - 1, text, format, args);
    text[capacity - 1] = 0;
}

void memman_emit(const memman *man, int32_t threshold, const char *text)
{
    if (man->echofile != nullptr) {
        (void)std::fputs(text, man->echofile);
        (void)std::fflush(man->echofile);
    }
    if (man->msgfunc != nullptr && man->list != nullptr && man->list->level > threshold)
        man->msgfunc(man->msghandle, text);
}

void memman_tell(const memman *man, int32_t threshold, size_t capacity, const char *format, ...)
{
    char text[MEMMAN_TEXT_BYTES];
    va_list args;
    va_start(args, format);
    format_text(capacity < sizeof text ? capacity : sizeof text, text, format, args);
    va_end(args);
    memman_emit(man, threshold, text);
}

/* ---- Trace lines ---- */

static bool is_traced(const memman *man)
{
    if (man->echofile != nullptr) return true;
    return man->msgfunc != nullptr && man->list != nullptr && man->list->level > MEMMAN_LEVEL_TRACE;
}

/* The lines differ in small things (a word, a full stop, the line number without a file, the room): kept, scripts that
 * read traces know them as they are. */
void memman_trace(const memman *man, memman_event event, uint64_t id, const char *raw, uint64_t size, const char *file,
                  int32_t line)
{
    if (!is_traced(man)) return;
    char size_text[MEMMAN_SIZE_BYTES];
    char usage_text[MEMMAN_SIZE_BYTES];
    (void)sysenv_sizetostr(1, sizeof size_text, size_text, size);
    (void)sysenv_sizetostr(1, sizeof usage_text, usage_text, man->curusage);
    const void *const at = raw;
    const char *const shown_file = file == nullptr ? "" : file;
    const int32_t shown_line = file == nullptr ? -1 : line;

    switch (event) {
    case MEMMAN_ALLOCATED:
        memman_tell(man, MEMMAN_LEVEL_TRACE, MEMMAN_TEXT_BYTES,
                    "Allocated(%s)   #%-6u at %-10p of size %-s (%-s) in file '%s(%d)'.\n", man->name,
                    static_cast<uint32_t>(id), at, size_text, usage_text, shown_file, shown_line);
        break;
    case MEMMAN_DEALLOCATED:
        memman_tell(man, MEMMAN_LEVEL_TRACE, MEMMAN_TEXT_BYTES,
                    "Deallocated(%s) #%-6I64u at %-10p of size %-s (%-s) in file '%s(%d)'\n", man->name, id, at,
                    size_text, usage_text, shown_file, line);
        break;
    case MEMMAN_REALLOCATED:
        memman_tell(man, MEMMAN_LEVEL_TRACE, MEMMAN_SHORT_TEXT_BYTES,
                    "Rellocated(%s)   #%-6I64u at %-10p of size %-s (%-s) in file '%s(%d)'.\n", man->name, id, at,
                    size_text, usage_text, shown_file, shown_line);
        break;
    }
}

/* ---- Echo file ---- */

/* The local time in the form of asctime, whatever the locale; it ends in a newline. */
static void time_text(size_t capacity, char *text)
{
    static const char *const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static const char *const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm now = {};
    if (!memman_localtime(&now)) {
        (void)sysenv_strncpy(capacity, text, "\n");
        return;
    }
    (void)sysenv_snprintf(capacity - 1, text, "%s %s %2d %02d:%02d:%02d %d\n", days[now.tm_wday], months[now.tm_mon],
                          now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec, now.tm_year + 1900);
    text[capacity - 1] = 0;
}

void memman_openecho(memman *man, const char *path, const char *header)
{
    if (man == nullptr) return;
    memman_closeecho(man);
    if (!memman_enter(man)) return;
    (void)sysenv_strncpy(sizeof man->echopath, man->echopath, path); /* may be cut; the file has the whole path */
    if (path != nullptr) man->echofile = std::fopen(path, "wt");
    if (man->echofile != nullptr) {
        char opened[64];
        time_text(sizeof opened, opened);
        sysenv_fprintf(man->echofile, "Header: %s\n", header == nullptr ? "" : header);
        sysenv_fprintf(man->echofile, "\nFile opened: %s\n", opened);
        (void)std::fflush(man->echofile);
    }
    memman_leave(man);
}

void memman_closeecho(memman *man)
{
    if (man == nullptr || man->echofile == nullptr) return;
    char closed[64];
    time_text(sizeof closed, closed);
    if (!memman_enter(man)) return;
    man->echopath[0] = 0;
    sysenv_fprintf(man->echofile, "\nFile closed: %s\n", closed);
    (void)std::fclose(man->echofile);
    man->echofile = nullptr;
    memman_leave(man);
}

void memman_echotofile(memman *man, const char *text)
{
    if (man == nullptr || man->echofile == nullptr || text == nullptr) return;
    (void)std::fputs(text, man->echofile);
}

/* ---- The ends of the process ---- */

enum { FATAL_STATUS = -99 };

static const char FATAL_PLACE[] = "Fatal error in file '%s(%d)'\n";
static const char FATAL_MESSAGE[] = "Message(%s): %s\n";

void memman_fatal(memman *man, const char *file, int32_t line, const char *format, ...)
{
    char fault[MEMMAN_TEXT_BYTES];
    va_list args;
    va_start(args, format);
    format_text(sizeof fault, fault, format, args);
    va_end(args);

    char message[MEMMAN_TEXT_BYTES];
    (void)sysenv_snprintf(sizeof message - 1, message, FATAL_MESSAGE, man->name, fault);
    message[sizeof message - 1] = 0;

    const int32_t threshold = man->fatalfunc != nullptr ? MEMMAN_LEVEL_FATALHOOK : MEMMAN_LEVEL_FATAL;
    memman_tell(man, threshold, MEMMAN_TEXT_BYTES, FATAL_PLACE, memman_shown(file), line);
    memman_emit(man, threshold, message);
    memman_closeecho(man);
    if (man->fatalfunc != nullptr) man->fatalfunc(man->fatalhandle, file, line, message, -1);
    std::exit(FATAL_STATUS);
}

void memman_fataldamaged(const memman *man, const char *file, int32_t line)
{
    char fault[MEMMAN_SIZE_BYTES];
    (void)sysenv_snprintf(sizeof fault - 1, fault, "begin guard of mman: %p", static_cast<const void *>(man));
    fault[sizeof fault - 1] = 0;
    char name[sizeof man->name]; /* what was written over the mark may have taken the name's end too */
    (void)sysenv_strncpy(sizeof name, name, man->name);
    sysenv_printf(FATAL_PLACE, memman_shown(file), line);
    sysenv_printf(FATAL_MESSAGE, name, fault);
    std::exit(FATAL_STATUS);
}
