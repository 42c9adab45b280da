/* sysfile_text.cpp - writes of text: each "\n" becomes CR LF. Nothing else is looked at, so that a CR LF of the caller
 * becomes CR CR LF. */
#include "sysfile_internal.h"

static const size_t FORMAT_BYTES = 2048;

/* A run without line ends, and then the one that follows it, if there is one. Most lines fit as a whole. */
static int32_t write_run(sysfile_t *file, const char *text, uint64_t n, bool has_end)
{
    sysfile_state_t *const state = file->state;
    if (has_end && state->read == 0 && n + 2 < sysfile_room(state)) {
        char *const at = state->buffer + state->used;
        std::memcpy(at, text, n);
        at[n] = '\r';
        at[n + 1] = '\n';
        state->used += n + 2;
        return SYSFILE_OK;
    }
    const int32_t res = sysfile_store(file, text, n);
    return has_end && res == SYSFILE_OK ? sysfile_storelineend(file) : res;
}

int32_t sysenv_fputc(sysfile_t *file, char c)
{
    return c == '\n' ? sysfile_storelineend(file) : sysfile_storebyte(file, c);
}

/* Looks for line ends and not for the length first: most texts are a line, which one search then finds the whole of. */
int32_t sysenv_fputs(sysfile_t *file, const char *text)
{
    if (text == nullptr) return SYSFILE_OK;
    int32_t res = SYSFILE_OK;
    do {
        const char *const end = std::strchr(text, '\n');
        const uint64_t run = end != nullptr ? static_cast<uint64_t>(end - text) : std::strlen(text);
        res = write_run(file, text, run, end != nullptr);
        text += run + (end != nullptr ? 1 : 0);
    } while (*text != 0 && res == SYSFILE_OK);
    return res;
}

int32_t sysenv_fwritetext(sysfile_t *file, uint64_t n, const char *text)
{
    int32_t res = SYSFILE_OK;
    while (text != nullptr && n > 0 && res == SYSFILE_OK) {
        const char *const end = static_cast<const char *>(std::memchr(text, '\n', n));
        const uint64_t run = end != nullptr ? static_cast<uint64_t>(end - text) : n;
        res = write_run(file, text, run, end != nullptr);
        const uint64_t done = run + (end != nullptr ? 1 : 0);
        text += done;
        n -= done;
    }
    return res;
}

void sysenv_fputsres(sysfile_t *file, const char *text, int32_t *res)
{
    if (*res == SYSFILE_OK) *res = sysenv_fputs(file, text);
}

void sysenv_fputsraw(sysfile_t *file, const char *text, int32_t *res)
{
    if (*res == SYSFILE_OK) *res = sysfile_store(file, text, std::strlen(text));
}

void sysenv_fnewline(sysfile_t *file, int32_t *res)
{
    if (*res == SYSFILE_OK) *res = sysfile_storelineend(file);
}

int32_t sysenv_vfformat(sysfile_t *file, const char *format, va_list args)
{
    char text[FORMAT_BYTES] = {0}; /* cleared: a formatter that fails may leave anything */
    (void)sysenv_vsnprintf(sizeof text, text, format, args);
    text[sizeof text - 1] = 0; /* a text that fills it has no end of its own */
    return text[0] == 0 ? SYSFILE_OK : sysenv_fputs(file, text);
}

int32_t sysenv_fformat(sysfile_t *file, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t res = sysenv_vfformat(file, format, args);
    va_end(args);
    return res;
}
