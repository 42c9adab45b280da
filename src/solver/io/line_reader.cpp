/* line_reader.cpp - see line_reader.h. */
#include "solver/io/line_reader.h"

#include <cstring>

namespace
{
constexpr size_t block_bytes = size_t{256} * 1024;
constexpr char order_mark[] = {'\xef', '\xbb', '\xbf'};

/* Gets more bytes behind those that are not given out yet, which move to the front of the buffer. */
int32_t lines_fill(line_reader *lines)
{
    const size_t left = lines->end - lines->next;
    if (left > 0 && lines->next > 0) std::memmove(lines->buffer.data(), lines->buffer.data() + lines->next, left);
    lines->next = 0;
    lines->end = left;
    lines->nul = left; /* a zero byte is refused before more is read */
    if (lines->buffer.size() - left < block_bytes) lines->buffer.resize(2 * lines->buffer.size());

    size_t got = 0;
    const int32_t res = source_read(lines->in, lines->buffer.data() + left, lines->buffer.size() - left, &got);
    if (res == ZLR_RES_ERR_SPACE) return res;
    if (res != ZLR_RES_OK)
        return io_error(lines->io, res, lines->number,
                        lines->number > 0 ? "reading fails behind this line: %s" : "reading fails: %s",
                        source_error(lines->in));

    lines->input_ended = got == 0;
    lines->end += got;
    const void *nul = std::memchr(lines->buffer.data() + left, '\0', got);
    lines->nul =
        nul == nullptr ? lines->end : static_cast<size_t>(static_cast<const char *>(nul) - lines->buffer.data());
    return ZLR_RES_OK;
}

/* Gives out the line that ends at `end`; the next one begins `skip` bytes behind. */
int32_t line_give(line_reader *lines, size_t end, size_t skip, std::string_view *line)
{
    const char *text = lines->buffer.data() + lines->next;
    size_t size = end - lines->next;
    ++lines->number;
    if (lines->nul < end)
        return io_error(lines->io, ZLR_RES_ERR_FILE_FORMAT, lines->number,
                        "found a zero byte where text was expected; the file is binary");
    if (size > 0 && text[size - 1] == '\r') --size;
    lines->next = end + skip;
    lines->last_is_whole = skip > 0;
    *line = {text, size};
    if (lines->number == 1 && size >= sizeof order_mark && std::memcmp(text, order_mark, sizeof order_mark) == 0)
        line->remove_prefix(sizeof order_mark);
    return ZLR_RES_OK;
}
}  // namespace

void lines_open(line_reader *lines, const io_context *io, byte_source *in)
{
    lines->io = io;
    lines->in = in;
    lines->buffer.resize(2 * block_bytes);
}

int32_t lines_next(line_reader *lines, std::string_view *line)
{
    size_t searched = lines->next;
    for (;;) {
        const char *from = lines->buffer.data() + searched;
        const void *feed = std::memchr(from, '\n', lines->end - searched);
        if (feed != nullptr) {
            const auto at = static_cast<size_t>(static_cast<const char *>(feed) - lines->buffer.data());
            return line_give(lines, at, 1, line);
        }
        if (lines->input_ended) break;
        if (lines->nul < lines->end) return line_give(lines, lines->end, 0, line); /* refuses it */
        searched = lines->end - lines->next; /* where the search goes on, once the rest is at the front */
        const int32_t res = lines_fill(lines);
        if (res != ZLR_RES_OK) return res;
    }
    if (lines->next < lines->end) return line_give(lines, lines->end, 0, line);
    lines->at_end = true;
    *line = {};
    return ZLR_RES_OK;
}

int32_t lines_next_batch(line_reader *lines, std::string_view *line, int32_t max, int32_t *num)
{
    const int32_t res = lines_next(lines, &line[0]);
    *num = 0;
    if (res != ZLR_RES_OK || lines->at_end) return res;
    *num = 1;
    const int64_t first = lines->number;
    while (*num < max) { /* what lies in the buffer already, up to a line that has something the matter */
        const char *from = lines->buffer.data() + lines->next;
        const void *feed = std::memchr(from, '\n', lines->end - lines->next);
        if (feed == nullptr) break;
        const auto at = static_cast<size_t>(static_cast<const char *>(feed) - lines->buffer.data());
        if (lines->nul < at || line_give(lines, at, 1, &line[*num]) != ZLR_RES_OK) break;
        ++*num;
    }
    lines->number = first - 1;
    return ZLR_RES_OK;
}
