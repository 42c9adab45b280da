/* lp_text.cpp - lines and numbers of the LP writer. */
#include "solver/io/lp_writer.h"

#include "solver/io/number.h"

static constexpr size_t buffer_bytes = size_t{64} * 1024;

static void hand_over(lp_text *text, size_t limit)
{
    if (text->buffer.size() < limit) return;
    sink_write(text->out, text->buffer.data(), text->buffer.size()); /* an error comes again when the text ends */
    text->buffer.clear();
}

void lp_text_line(lp_text *text, std::string_view start)
{
    if (text->line_length > 0) text->buffer += '\n';
    hand_over(text, buffer_bytes);
    text->buffer += start;
    text->line_length = start.size();
}

void lp_text_piece(lp_text *text, std::string_view piece)
{
    if (text->line_length + 1 + piece.size() > text->line_limit) lp_text_line(text, " ");
    text->buffer += ' ';
    text->buffer += piece;
    text->line_length += 1 + piece.size();
}

int32_t lp_text_end(lp_text *text)
{
    if (text->line_length > 0) text->buffer += '\n';
    text->line_length = 0;
    if (text->buffer.empty()) return ZLR_RES_OK;
    const int32_t res = sink_write(text->out, text->buffer.data(), text->buffer.size());
    text->buffer.clear();
    return res;
}

void lp_append_number(std::string *text, double value, int32_t digits)
{
    char number[number_room];
    text->append(number, number_write(number, value, digits));
}
