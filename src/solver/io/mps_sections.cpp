/* mps_sections.cpp - see mps_reader.h: section headers with what stands on them, and the short sections OBJSENSE, OBJNAME
 * and ROWS. */
#include "solver/io/mps_reader.h"

#include <limits>

namespace
{
/* ---- The short sections -------------------------------------------------------------------------------------------- */

int32_t line_objsense(mps_reader *r, std::string_view word)
{
    if (r->sense_given) return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the objective sense is given twice");
    if (mps_is_word(word, "MAX") || mps_is_word(word, "MAXIMIZE") || mps_is_word(word, "MAXIMISE"))
        r->m->sense = ZLR_SENSE_MAX;
    else if (mps_is_word(word, "MIN") || mps_is_word(word, "MINIMIZE") || mps_is_word(word, "MINIMISE"))
        r->m->sense = ZLR_SENSE_MIN;
    else
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where MAX or MIN was expected", io_quote(word).c_str());
    r->sense_given = true;
    return ZLR_RES_OK;
}

int32_t line_objname(mps_reader *r, std::string_view name)
{
    if (r->objective_asked) return ZLR_RES_OK;
    if (r->objective_chosen) return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the objective is named twice");
    r->objective_chosen = true;
    r->m->obj_name = name;
    return ZLR_RES_OK;
}

/* The first row of type N is the objective, or the one that OBJNAME chose; further ones are free rows. */
bool is_objective(const mps_reader *r, char type, std::string_view name)
{
    return type == 'N' && !r->has_objective && (!r->objective_chosen || name == r->m->obj_name);
}
}  // namespace

int32_t mps_line_rows(mps_reader *r, const mps_fields *fields)
{
    const std::string_view type = fields->text[0];
    const std::string_view name = fields->text[1];
    const int32_t num = mps_before_comment(fields, 2);
    if (num > 2)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' behind the name of a row",
                        io_quote(fields->text[2]).c_str());
    const char letter = type.size() == 1 ? static_cast<char>(type[0] & ~0x20) : '\0';
    if (letter != 'N' && letter != 'E' && letter != 'L' && letter != 'G')
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where a row type, N, E, L or G, was expected",
                        io_quote(type).c_str());
    if (num < 2 || name.empty())
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found the end of the line where the name of a row was expected");
    if (mps_find_row(r, name) != mps_none)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "there is a row '%s' already", io_quote(name).c_str());
    if (is_objective(r, letter, name)) {
        r->m->obj_name = name;
        r->has_objective = true;
        return ZLR_RES_OK;
    }
    if (r->row_type.size() == static_cast<size_t>(std::numeric_limits<int32_t>::max()))
        return mps_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED, "there are more rows than can be numbered");
    bool is_new = false;
    name_index_intern(&r->row_index, &r->m->con_names, name, &is_new);
    r->row_type.push_back(letter);
    return ZLR_RES_OK;
}

int32_t mps_line_single_word(mps_reader *r, const mps_fields *fields)
{
    const int32_t first = fields->fixed && fields->text[0].empty() ? 1 : 0;
    if (mps_before_comment(fields, first + 1) > first + 1)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the end of the line was expected",
                        io_quote(fields->text[first + 1]).c_str());
    if (r->section == mps_section::objsense) return line_objsense(r, fields->text[first]);
    return line_objname(r, fields->text[first]);
}

namespace
{
int32_t end_rows(mps_reader *r)
{
    if (r->objective_chosen && !r->has_objective) {
        const std::string name = io_quote(r->m->obj_name);
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->section_line,
                        "no row of type N has the name '%s' of the objective", name.c_str());
    }
    const size_t num = r->row_type.size();
    r->m->num_con = static_cast<int32_t>(num);
    r->rhs.assign(num, std::numeric_limits<double>::quiet_NaN());
    r->row_mark.assign(num, mps_none);
    return ZLR_RES_OK;
}

/* ---- Section headers ----------------------------------------------------------------------------------------------- */

constexpr uint32_t bit(mps_section section) { return 1U << static_cast<uint32_t>(section); }

struct section_row {
    const char *word;
    mps_section section;
    uint32_t after;    /* sections that must stand before */
    uint32_t before;   /* sections that must not */
    bool repeats;      /* may stand more than once */
    int32_t max_words; /* on its line, itself counted */
};

constexpr uint32_t has_rows = bit(mps_section::rows);
constexpr uint32_t has_columns = has_rows | bit(mps_section::columns);

/* clang-format off */
constexpr section_row section_table[] = {
    { "NAME",     mps_section::name,     0,           has_rows, false, mps_max_fields },
    { "OBJSENSE", mps_section::objsense, 0,           0,        false, 2 },
    { "OBJNAME",  mps_section::objname,  0,           has_rows, false, 2 },
    { "ROWS",     mps_section::rows,     0,           0,        false, 1 },
    { "COLUMNS",  mps_section::columns,  has_rows,    0,        false, 1 },
    { "RHS",      mps_section::rhs,      has_columns, 0,        false, 1 },
    { "RANGES",   mps_section::ranges,   has_columns, 0,        false, 1 },
    { "BOUNDS",   mps_section::bounds,   has_columns, 0,        false, 1 },
    { "QUADOBJ",  mps_section::quadobj,  has_columns, 0,        false, 1 },
    { "QSECTION", mps_section::qsection, has_columns, 0,        true,  2 },
    { "QMATRIX",  mps_section::qmatrix,  has_columns, 0,        false, 1 },
    { "QCMATRIX", mps_section::qcmatrix, has_columns, 0,        true,  2 },
    { "ENDATA",   mps_section::endata,   has_columns, 0,        false, 1 },
};

/* Sections of other systems, whose content changes what the problem is. */
constexpr const char *refused_sections[] = {
    "SOS", "SOS1", "SOS2", "SETS", "INDICATORS", "GENCONS", "CSECTION", "PWLOBJ", "PWLNAM", "PWLCON", "LAZYCONS",
    "USERCUTS", "SCENARIOS", "CONES",
};
/* clang-format on */

const section_row *section_find(std::string_view word)
{
    for (const section_row &row : section_table)
        if (mps_is_word(word, row.word)) return &row;
    return nullptr;
}

/* The name of a section that must have stood before, or null. */
const char *section_missing(const mps_reader *r, uint32_t needed)
{
    for (const section_row &row : section_table)
        if ((needed & ~r->seen & bit(row.section)) != 0) return row.word;
    return nullptr;
}

int32_t section_check(mps_reader *r, const section_row *row, const mps_fields *words)
{
    const char *missing = section_missing(r, row->after);
    const bool is_late = (r->seen & row->before) != 0;
    const bool is_twice = (r->seen & bit(row->section)) != 0 && !row->repeats;
    const int32_t num = mps_before_comment(words, 1);
    if (missing != nullptr)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found %s where the section %s was expected", row->word, missing);
    if (is_late) return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found %s behind the section ROWS", row->word);
    if (is_twice) return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "the section %s stands twice", row->word);
    if (num > row->max_words)
        return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' behind the name of the section %s",
                        io_quote(words->text[row->max_words]).c_str(), row->word);
    return ZLR_RES_OK;
}

}  // namespace

/* Tells its own errors: they are not of the line at hand. */
int32_t mps_end_section(mps_reader *r)
{
    switch (r->section) {
    case mps_section::rows: return end_rows(r);
    case mps_section::columns: return mps_end_columns(r);
    case mps_section::quadobj:
    case mps_section::qsection:
    case mps_section::qmatrix:
    case mps_section::qcmatrix: return mps_end_quad(r);
    case mps_section::objsense:
        if (r->sense_given) return ZLR_RES_OK;
        return io_error(r->io, ZLR_RES_ERR_FILE_FORMAT, r->section_line,
                        "the section OBJSENSE holds neither MAX nor MIN");
    default: return ZLR_RES_OK;
    }
}

namespace
{
/* The name of the problem is what stands behind NAME, blanks inside included. A last word FREE tells the format. */
void take_name(mps_reader *r, std::string_view line, const mps_fields *words)
{
    if (words->num < 2) return;
    const char *begin = words->text[1].data();
    std::string_view name(begin, static_cast<size_t>(line.data() + line.size() - begin));
    const std::string_view blanks = " \t";
    name.remove_suffix(name.size() - 1 - name.find_last_not_of(blanks));

    const size_t last = name.find_last_of(blanks);
    if (last != std::string_view::npos && name.substr(last + 1) == "FREE") {
        name = name.substr(0, name.find_last_not_of(blanks, last) + 1);
        if (r->dialect == MPS_AUTO) r->dialect = MPS_FREE;
    }
    r->m->name = name;
}

/* Begins a section with what stands on its own line. */
int32_t section_begin(mps_reader *r, mps_section section, std::string_view line, const mps_fields *words)
{
    const bool has_word = mps_before_comment(words, 1) > 1;
    const std::string_view word = has_word ? words->text[1] : std::string_view();
    r->section = section;
    r->section_line = r->lines.number;
    r->seen |= bit(section);
    switch (section) {
    case mps_section::name: take_name(r, line, words); return ZLR_RES_OK;
    case mps_section::objsense: return has_word ? line_objsense(r, word) : ZLR_RES_OK;
    case mps_section::objname: return has_word ? line_objname(r, word) : ZLR_RES_OK;
    case mps_section::quadobj:
    case mps_section::qmatrix:
    case mps_section::qsection:
    case mps_section::qcmatrix: return mps_begin_quad(r, word);
    default: return ZLR_RES_OK;
    }
}

int32_t unknown_section(mps_reader *r, std::string_view word)
{
    for (const char *refused : refused_sections)
        if (mps_is_word(word, refused))
            return mps_fail(r, ZLR_RES_ERR_FILE_UNSUPPORTED, "the section %s is not supported", refused);
    return mps_fail(r, ZLR_RES_ERR_FILE_FORMAT, "found '%s' where the name of a section was expected",
                    io_quote(word).c_str());
}
}  // namespace

const char *mps_section_word(mps_section section)
{
    for (const section_row &row : section_table)
        if (row.section == section) return row.word;
    return "";
}

int32_t mps_take_header(mps_reader *r, std::string_view line)
{
    mps_fields words;
    mps_split_free(line, &words);
    int32_t res = ZLR_RES_OK;

    const section_row *row = section_find(words.text[0]);
    if (row == nullptr) {
        /* Some write the sense at the beginning of its line. */
        const bool is_sense = r->section == mps_section::objsense && !r->sense_given && words.num == 1;
        res = is_sense ? line_objsense(r, words.text[0]) : unknown_section(r, words.text[0]);
        return res == ZLR_RES_OK ? res : mps_tell(r, res, r->lines.number);
    }
    if ((res = mps_end_section(r)) != ZLR_RES_OK) return res;
    if ((res = section_check(r, row, &words)) == ZLR_RES_OK) res = section_begin(r, row->section, line, &words);
    return res == ZLR_RES_OK ? res : mps_tell(r, res, r->lines.number);
}
