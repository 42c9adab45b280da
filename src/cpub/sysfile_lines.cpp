/* sysfile_lines.cpp - line reads.
 *
 * There are two ways to a line: within the buffer, and across refills. They differ in one thing, the "\n" directly
 * behind a line that has filled the capacity, and both are kept: see sysfile.h. */
#include "sysfile_internal.h"

/* The line within the buffer, which has more than `capacity` unread bytes. Returns its length. */
static uint64_t line_within(sysfile_state_t *state, uint64_t capacity, char *destination)
{
    const char *const begin = state->buffer + state->pos;
    const char *const end = static_cast<const char *>(std::memchr(begin, '\n', capacity));
    const uint64_t length = end != nullptr ? static_cast<uint64_t>(end - begin) : capacity - 1;
    std::memcpy(destination, begin, length);
    state->pos += length + (end != nullptr ? 1 : 0);
    return length;
}

/* Moves unread bytes to the destination up to a "\n", which is moved too but not counted, or up to n bytes. Returns how
 * many; *is_complete: the "\n" was there. */
static uint64_t move_line(sysfile_state_t *state, uint64_t n, char *destination, bool *is_complete)
{
    const char *const begin = state->buffer + state->pos;
    const uint64_t unread = sysfile_unread(state);
    const uint64_t limit = unread < n ? unread : n;
    const char *const end = static_cast<const char *>(std::memchr(begin, '\n', limit));
    *is_complete = end != nullptr;
    const uint64_t length = end != nullptr ? static_cast<uint64_t>(end - begin) : limit;
    const uint64_t moved = length + (end != nullptr ? 1 : 0);
    std::memcpy(destination, begin, moved);
    state->pos += moved;
    return length;
}

/* The line across refills. SYSFILE_EOF only if there was nothing: a last line without an end is a line. */
static uint64_t line_across(sysfile_t *file, uint64_t capacity, char *destination, int32_t *res)
{
    sysfile_state_t *const state = file->state;
    uint64_t length = 0;
    bool is_complete = false;
    while (!is_complete && length + 1 < capacity) {
        int32_t end = SYSFILE_OK; /* of this call alone */
        if (state->pos == state->used) sysenv_fillbuffer(file, &end);
        if (end != SYSFILE_OK || sysfile_unread(state) == 0) {
            if (length == 0) *res = SYSFILE_EOF;
            break;
        }
        length += move_line(state, capacity - 1 - length, destination + length, &is_complete);
    }
    return length;
}

/* Both line reads. Returns whether there is a result, which the end of the file is as well. */
static bool read_line(sysfile_t *file, uint64_t capacity, uint64_t *length, char *destination, int32_t *res)
{
    sysfile_state_t *const state = file->state;
    if (*res != SYSFILE_OK) return false;
    if (state->read == 0) {
        *res = SYSFILE_NOTREADABLE;
        return false;
    }
    sysfile_assert(file, __LINE__, state->write == 0);

    const bool is_within = capacity > 0 && capacity < sysfile_unread(state);
    uint64_t num =
        is_within ? line_within(state, capacity, destination) : line_across(file, capacity, destination, res);
    sysfile_assert(file, __LINE__, num < capacity); /* the terminator needs a place too */
    while (num > 0 && destination[num - 1] == '\r') --num;
    destination[num] = 0;
    *length = num;
    return true;
}

void sysenv_fgetslen(sysfile_t *file, uint64_t capacity, uint64_t *length, char *destination, int32_t *res)
{
    (void)read_line(file, capacity, length, destination, res);
}

void sysenv_fgets(sysfile_t *file, uint64_t capacity, char *destination, int32_t *res)
{
    uint64_t length = 0;
    if (!read_line(file, capacity, &length, destination, res)) return;
    if (*res != SYSFILE_OK || length + 1 >= capacity) return;
    destination[length] = '\n';
    destination[length + 1] = 0;
}
