/* lp_lexer.cpp - words of an LP text. Order: character classes, the block, blanks and comments, tokens, looking ahead.
 *
 * The byte behind the block is a 0, which belongs to no class: scanning loops stop there without comparing positions,
 * and only then is it asked whether the block or the file has ended, or the text really holds a 0. */
#include "solver/io/lp_lexer.h"

#include "solver/io/number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

static constexpr size_t block_bytes = size_t{256} * 1024;

/* Behind the block: the 0, and room for those who copy a short name with a fixed size. */
static constexpr size_t block_slack = 64;

/* A number longer than this has no more meaning than its first digits; in a file it is a sign of damage. */
static constexpr size_t max_number_bytes = 400;

/* ---- character classes */

enum : uint8_t { CHAR_START = 1, CHAR_NAME = 2, CHAR_DIGIT = 4, CHAR_BLANK = 8, CHAR_WRITE = 16 };

static constexpr std::array<uint8_t, 256> make_classes()
{
    std::array<uint8_t, 256> table{};
    for (int c = 'a'; c <= 'z'; c++) table[static_cast<unsigned char>(c)] = CHAR_START | CHAR_NAME | CHAR_WRITE;
    for (int c = 'A'; c <= 'Z'; c++) table[static_cast<unsigned char>(c)] = CHAR_START | CHAR_NAME | CHAR_WRITE;
    for (int c = '0'; c <= '9'; c++) table[static_cast<unsigned char>(c)] = CHAR_DIGIT | CHAR_NAME | CHAR_WRITE;
    for (const char c : std::string_view("!\"#$%&(),;?@_`'{}~"))
        table[static_cast<unsigned char>(c)] = CHAR_START | CHAR_NAME | CHAR_WRITE;
    table['.'] = CHAR_NAME | CHAR_WRITE;
    table['|'] = CHAR_START | CHAR_NAME;
    table['/'] = CHAR_NAME; /* not at the start: there it belongs to "] / 2" */
    for (size_t c = 0x80; c < 0x100; c++) table[c] = CHAR_START | CHAR_NAME;
    for (const char c : std::string_view(" \t\r\n\f\v")) table[static_cast<unsigned char>(c)] = CHAR_BLANK;
    return table;
}

static constexpr std::array<uint8_t, 256> classes = make_classes();

static inline bool is_class(char c, uint8_t mask) { return (classes[static_cast<unsigned char>(c)] & mask) != 0; }

bool lp_name_writable(std::string_view name)
{
    if (name.empty() || name.size() > lp_max_name || !is_class(name[0], CHAR_START)) return false;
    for (const char c : name)
        if (!is_class(c, CHAR_WRITE)) return false;
    return true;
}

/* ---- the block */

static void lexer_fail(lp_lexer *lex, int32_t code)
{
    lex->code = code;
    lex->kind = LP_BAD;
    lex->text = {};
}

/* Fetches more bytes behind those from `*keep` on, which move to the start of the block. False at the end of the source
 * and after an error. `*keep` and `pos` go along. */
static bool block_more(lp_lexer *lex, const char **keep)
{
    if (lex->at_end) return false;
    const size_t kept = static_cast<size_t>(lex->end - *keep);
    const size_t offset = static_cast<size_t>(lex->pos - *keep);
    if (kept == block_bytes) return false; /* callers bound what they keep */

    char *base = lex->block.data();
    if (kept > 0) std::memmove(base, *keep, kept);
    size_t got = 0;
    const int32_t res = source_read(lex->in, base + kept, block_bytes - kept, &got);
    *keep = base;
    lex->pos = base + offset;
    base[kept + got] = 0;
    lex->end = base + kept + got;
    if (res != ZLR_RES_OK) {
        lex->at_end = true;
        lexer_fail(lex, io_error(lex->io, res, lex->next_line, "%s", source_error(lex->in)));
        return false;
    }
    if (got == 0) lex->at_end = true;
    return got > 0;
}

/* ---- blanks and comments */

/* A model's name travels in a comment that several programs write first. */
static void comment_note_name(lp_lexer *lex, std::string_view text)
{
    static constexpr std::string_view mark = "\\Problem name:";
    if (!text.starts_with(mark) || !lex->problem_name.empty()) return;
    text.remove_prefix(mark.size());
    while (!text.empty() && is_class(text.front(), CHAR_BLANK)) text.remove_prefix(1);
    while (!text.empty() && is_class(text.back(), CHAR_BLANK)) text.remove_suffix(1);
    if (text.size() <= lp_max_name) lex->problem_name = text;
}

/* Moves to the end of the comment's line. Its text is looked at only before the first word, and no more of it than a
 * name can fill. */
static void skip_comment(lp_lexer *lex)
{
    std::string text;
    for (;;) {
        const auto left = static_cast<size_t>(lex->end - lex->pos);
        const void *stop = std::memchr(lex->pos, '\n', left);
        const char *to = stop != nullptr ? static_cast<const char *>(stop) : lex->end;
        if (!lex->started && text.size() < 2 * lp_max_name)
            text.append(lex->pos, std::min(static_cast<size_t>(to - lex->pos), 2 * lp_max_name));
        lex->pos = to;
        if (stop != nullptr) break;
        const char *keep = to;
        if (!block_more(lex, &keep)) break;
    }
    if (!lex->started) comment_note_name(lex, text);
}

/* Moves past blanks and comments. Returns whether the end of a line was among them. */
static bool skip_blanks(lp_lexer *lex)
{
    bool new_line = false;
    for (;;) {
        const char *p = lex->pos;
        while (is_class(*p, CHAR_BLANK)) {
            if (*p == '\n') {
                new_line = true;
                lex->next_line++;
            }
            p++;
        }
        lex->pos = p;
        if (*p == '\\') {
            skip_comment(lex);
        } else if (p == lex->end) {
            const char *keep = p;
            if (!block_more(lex, &keep)) return new_line;
        } else {
            return new_line;
        }
    }
}

/* ---- tokens */

static void read_name(lp_lexer *lex)
{
    const char *start = lex->pos;
    const char *p = start + 1;
    for (;;) {
        while (is_class(*p, CHAR_NAME)) p++;
        if (p != lex->end || static_cast<size_t>(p - start) > lp_max_name) break;
        lex->pos = p;
        const bool is_more = block_more(lex, &start);
        p = lex->pos; /* moved, even where there is no more */
        if (!is_more) break;
    }
    if (lex->code != ZLR_RES_OK) return;
    lex->pos = p;
    lex->kind = LP_NAME;
    lex->text = std::string_view(start, static_cast<size_t>(p - start));
    if (lex->text.size() > lp_max_name)
        lexer_fail(lex, io_error(lex->io, ZLR_RES_ERR_FILE_FORMAT, lex->line,
                                 "found the name '%s...' where a name of at most %d characters was expected",
                                 io_quote(lex->text.substr(0, 32)).c_str(), static_cast<int>(lp_max_name)));
}

/* End of the number that begins at `p`: digits, a point, digits, and an exponent if one is complete ("2e" is the number
 * 2 before the name e). Stops at the 0 behind the block. */
static const char *number_end(const char *p)
{
    while (is_class(*p, CHAR_DIGIT)) p++;
    if (*p == '.') {
        p++;
        while (is_class(*p, CHAR_DIGIT)) p++;
    }
    if (*p != 'e' && *p != 'E') return p;
    const char *q = p + 1;
    if (*q == '+' || *q == '-') q++;
    if (!is_class(*q, CHAR_DIGIT)) return p;
    while (is_class(*q, CHAR_DIGIT)) q++;
    return q;
}

static void read_number(lp_lexer *lex)
{
    /* An exponent may be cut two bytes before it is known to be one. */
    static constexpr ptrdiff_t look = 3;
    const char *start = lex->pos;
    const char *p = number_end(start);
    while (lex->end - p < look && static_cast<size_t>(p - start) <= max_number_bytes) {
        lex->pos = p;
        const bool is_more = block_more(lex, &start);
        p = number_end(start); /* moved, even where there is no more */
        if (!is_more) break;
    }
    if (lex->code != ZLR_RES_OK) return;
    lex->pos = p;
    lex->kind = LP_NUMBER;
    lex->text = std::string_view(start, static_cast<size_t>(p - start));
    if (lex->text.size() > max_number_bytes || !number_parse(lex->text, &lex->value) || !std::isfinite(lex->value))
        lexer_fail(lex, io_error(lex->io, ZLR_RES_ERR_FILE_FORMAT, lex->line,
                                 "found '%s' where a number in the range of double precision was expected",
                                 io_quote(lex->text.substr(0, 64)).c_str()));
}

/* The byte behind `pos`, 0 at the end of the file. */
static char second_char(lp_lexer *lex)
{
    if (lex->end - lex->pos < 2) {
        const char *keep = lex->pos;
        (void)block_more(lex, &keep);
    }
    return lex->end - lex->pos < 2 ? '\0' : lex->pos[1];
}

static void take_sign(lp_lexer *lex, lp_kind kind, size_t size)
{
    lex->kind = kind;
    lex->text = std::string_view(lex->pos, size);
    lex->pos += size;
}

static void read_sense(lp_lexer *lex)
{
    const char second = second_char(lex);
    switch (*lex->pos) {
    case '<': take_sign(lex, LP_LESS, second == '=' ? 2 : 1); break;
    case '>': take_sign(lex, LP_GREATER, second == '=' ? 2 : 1); break;
    default:
        if (second == '<')
            take_sign(lex, LP_LESS, 2);
        else if (second == '>')
            take_sign(lex, LP_GREATER, 2);
        else
            take_sign(lex, LP_EQUAL, 1);
        break;
    }
}

static void read_strange(lp_lexer *lex)
{
    const auto byte = static_cast<unsigned char>(*lex->pos);
    if (byte >= 0x20 && byte != 0x7f) {
        take_sign(lex, LP_OTHER, 1);
        return;
    }
    lexer_fail(lex, io_error(lex->io, ZLR_RES_ERR_FILE_FORMAT, lex->line,
                             "found the byte 0x%02x where text was expected; this is no LP file", byte));
}

static void read_sign(lp_lexer *lex)
{
    switch (*lex->pos) {
    case '+': take_sign(lex, LP_PLUS, 1); break;
    case '-':
        if (second_char(lex) == '>')
            take_sign(lex, LP_ARROW, 2);
        else
            take_sign(lex, LP_MINUS, 1);
        break;
    case '<':
    case '>':
    case '=': read_sense(lex); break;
    case ':': take_sign(lex, LP_COLON, 1); break;
    case '[': take_sign(lex, LP_OPEN, 1); break;
    case ']': take_sign(lex, LP_CLOSE, 1); break;
    case '*': take_sign(lex, LP_STAR, 1); break;
    case '^': take_sign(lex, LP_CARET, 1); break;
    case '/': take_sign(lex, LP_SLASH, 1); break;
    default: read_strange(lex); break;
    }
}

void lp_next(lp_lexer *lex)
{
    if (lex->code != ZLR_RES_OK) return;
    /* The common case, one blank before the next word, is not worth a call. */
    bool new_line = lex->passed_line;
    if (*lex->pos == ' ' && is_class(lex->pos[1], CHAR_NAME))
        lex->pos++;
    else if (skip_blanks(lex))
        new_line = true;
    if (lex->code != ZLR_RES_OK) return;
    lex->passed_line = false;
    lex->first_on_line = new_line;
    lex->line = lex->next_line;

    const char c = *lex->pos;
    if (is_class(c, CHAR_START)) {
        read_name(lex);
    } else if (is_class(c, CHAR_DIGIT) || (c == '.' && is_class(second_char(lex), CHAR_DIGIT))) {
        read_number(lex);
    } else if (lex->pos == lex->end) {
        lex->kind = LP_END_OF_FILE;
        lex->text = {};
    } else {
        read_sign(lex);
    }
}

void lp_lexer_start(lp_lexer *lex, const io_context *io, byte_source *in)
{
    lex->io = io;
    lex->in = in;
    lex->block.resize(block_bytes + block_slack);
    lex->pos = lex->end = lex->block.data();
    lex->passed_line = true;

    /* Some editors put a byte order mark first. */
    const char *keep = lex->pos;
    while (lex->end - lex->pos < 3 && block_more(lex, &keep)) {}
    if (std::string_view(lex->pos, static_cast<size_t>(lex->end - lex->pos)).starts_with("\xef\xbb\xbf")) lex->pos += 3;
    lp_next(lex);
    lex->started = true;
}

/* ---- looking ahead */

/* Makes the text of the token, a name, outlive the block. */
static void hold_text(lp_lexer *lex)
{
    if (lex->text.data() == lex->held || lex->text.size() > lp_max_name) return;
    std::memcpy(lex->held, lex->text.data(), lex->text.size());
    lex->text = std::string_view(lex->held, lex->text.size());
}

bool lp_colon_follows(lp_lexer *lex)
{
    const char *p = lex->pos;
    if (*p == ' ') p++;
    if (is_class(*p, CHAR_NAME)) return false;
    if (*p == ':') return true;
    hold_text(lex);
    if (skip_blanks(lex)) lex->passed_line = true;
    return *lex->pos == ':';
}

static const char *after_blanks(const char *p)
{
    while (*p == ' ' || *p == '\t') p++;
    return p;
}

bool lp_word_follows(lp_lexer *lex, std::string_view word)
{
    static constexpr ptrdiff_t look = 96;
    if (lex->end - lex->pos < look) {
        hold_text(lex);
        const char *keep = lex->pos;
        while (lex->end - lex->pos < look && block_more(lex, &keep)) {}
    }
    const char *p = after_blanks(lex->pos);
    if (static_cast<size_t>(lex->end - p) < word.size()) return false;
    for (const char c : word) {
        const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        if (*p != c && *p != upper) return false;
        p++;
    }
    return !is_class(*p, CHAR_NAME);
}

void lp_skip_word(lp_lexer *lex, std::string_view word) { lex->pos = after_blanks(lex->pos) + word.size(); }

/* ---- messages */

std::string lp_found(const lp_lexer *lex)
{
    if (lex->kind == LP_END_OF_FILE) return "the end of the file";
    return "'" + io_quote(lex->text) + "'";
}

int32_t lp_expected(lp_lexer *lex, const char *expected)
{
    if (lex->code == ZLR_RES_OK)
        lexer_fail(lex, io_error(lex->io, ZLR_RES_ERR_FILE_FORMAT, lex->line, "found %s where %s was expected",
                                 lp_found(lex).c_str(), expected));
    return lex->code;
}
