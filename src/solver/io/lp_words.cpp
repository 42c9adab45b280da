/* lp_words.cpp - see lp_words.h. The table is asked for every name of a text, so it is entered only after the length and
 * the first letter of a name allow it. */
#include "solver/io/lp_words.h"

#include <array>
#include <cstring>

/* Rows with a second word stand before the row of the same word alone. */
static constexpr lp_header section_table[] = {
    {"subject", "to", LP_SECTION_ROWS, "Subject To"},
    {"such", "that", LP_SECTION_ROWS, "Such That"},
    {"st", "", LP_SECTION_ROWS, "st"},
    {"st.", "", LP_SECTION_ROWS, "st."},
    {"s.t.", "", LP_SECTION_ROWS, "s.t."},
    {"bounds", "", LP_SECTION_BOUNDS, "Bounds"},
    {"bound", "", LP_SECTION_BOUNDS, "Bound"},
    {"general", "constraints", LP_SECTION_REFUSED, "General Constraints"},
    {"general", "", LP_SECTION_GENERAL, "General"},
    {"generals", "", LP_SECTION_GENERAL, "Generals"},
    {"gen", "", LP_SECTION_GENERAL, "Gen"},
    {"integer", "", LP_SECTION_GENERAL, "Integer"},
    {"integers", "", LP_SECTION_GENERAL, "Integers"},
    {"int", "", LP_SECTION_GENERAL, "Int"},
    {"binary", "", LP_SECTION_BINARY, "Binary"},
    {"binaries", "", LP_SECTION_BINARY, "Binaries"},
    {"bin", "", LP_SECTION_BINARY, "Bin"},
    {"end", "", LP_SECTION_END, "End"},
    {"semi", "-continuous", LP_SECTION_REFUSED, "Semi-Continuous"},
    {"semi", "-integer", LP_SECTION_REFUSED, "Semi-Integer"},
    {"semi", "continuous", LP_SECTION_REFUSED, "Semi-Continuous"},
    {"semi", "", LP_SECTION_REFUSED, "Semi"},
    {"semis", "", LP_SECTION_REFUSED, "Semis"},
    {"sos", "", LP_SECTION_REFUSED, "SOS"},
    {"sos1", "", LP_SECTION_REFUSED, "SOS1"},
    {"sos2", "", LP_SECTION_REFUSED, "SOS2"},
    {"lazy", "constraints", LP_SECTION_REFUSED, "Lazy Constraints"},
    {"user", "cuts", LP_SECTION_REFUSED, "User Cuts"},
    {"pwlobj", "", LP_SECTION_REFUSED, "PWLObj"},
};

struct sense_row {
    std::string_view word;
    int32_t sense;
};

static constexpr sense_row sense_table[] = {
    {"min", ZLR_SENSE_MIN}, {"minimize", ZLR_SENSE_MIN}, {"minimise", ZLR_SENSE_MIN}, {"minimum", ZLR_SENSE_MIN},
    {"max", ZLR_SENSE_MAX}, {"maximize", ZLR_SENSE_MAX}, {"maximise", ZLR_SENSE_MAX}, {"maximum", ZLR_SENSE_MAX},
};

static constexpr size_t longest_word = 8; /* of section_table */

/* Which letters begin a word of section_table, as a bit each. */
static constexpr uint32_t make_initials()
{
    uint32_t bits = 0;
    for (const lp_header &row : section_table) bits |= 1U << static_cast<uint32_t>(row.word[0] - 'a');
    return bits;
}

static constexpr uint32_t initials = make_initials();

static bool is_word(std::string_view text, std::string_view word)
{
    if (text.size() != word.size()) return false;
    for (size_t i = 0; i < word.size(); i++) {
        const char c = text[i];
        const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        if (lower != word[i]) return false;
    }
    return true;
}

/* Cheap, and false for most names. */
static inline bool may_be_header(std::string_view text)
{
    if (text.size() < 2 || text.size() > longest_word) return false;
    const auto letter = static_cast<uint32_t>((static_cast<unsigned char>(text[0]) | 0x20U) - 'a');
    return letter < 26 && (initials >> letter & 1U) != 0;
}

/* Words that open a section in some dialects only, and may well be names elsewhere, count at the start of a line. */
static bool is_header(lp_lexer *lex, const lp_header *row)
{
    if (!is_word(lex->text, row->word)) return false;
    if (!row->second.empty()) return lp_word_follows(lex, row->second);
    if (row->section == LP_SECTION_REFUSED && !lex->first_on_line) return false;
    return !lp_colon_follows(lex);
}

const lp_header *lp_header_at(lp_lexer *lex)
{
    if (!may_be_header(lex->text)) return nullptr;
    for (const lp_header &row : section_table)
        if (is_header(lex, &row)) return &row;
    return nullptr;
}

void lp_skip_header(lp_lexer *lex, const lp_header *header)
{
    if (!header->second.empty()) lp_skip_word(lex, header->second);
    lp_next(lex);
}

int32_t lp_sense_word(std::string_view text)
{
    for (const sense_row &row : sense_table)
        if (is_word(text, row.word)) return row.sense;
    return -1;
}

bool lp_is_free(std::string_view text) { return is_word(text, "free"); }

bool lp_is_infinity(std::string_view text)
{
    if (text.size() != 3 && text.size() != 8) return false;
    return is_word(text, "inf") || is_word(text, "infinity");
}

bool lp_is_reserved(std::string_view text)
{
    for (const lp_header &row : section_table)
        if (is_word(text, row.word)) return true;
    for (const std::string_view word : {"nan", "infinite", "to", "sin"})
        if (is_word(text, word)) return true;
    return lp_sense_word(text) >= 0 || lp_is_free(text) || lp_is_infinity(text);
}
