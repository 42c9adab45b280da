/* adjust_write.cpp - see adjust.h: what is changed before a write. */
#include "solver/codes/version.h"
#include "solver/io/adjust.h"
#include "solver/report/clock.h"

#include <algorithm>
#include <cmath>

namespace
{
struct write_wishes {
    double tiny;
    int32_t sense; /* SENSE_KEEP, or one that is not the problem's */
    int32_t constant;
    bool numbers_names;
    const char *name;
};

write_wishes wishes_of(const io_context *io, const model *m)
{
    const param_set *params = io->params;
    write_wishes w = {0.0, SENSE_KEEP, CONSTANT_KEEP, false, ""};
    if (params == nullptr) return w;
    const int32_t sense = param_int(params, IPAR_WRITE_SENSE);
    if (sense != SENSE_KEEP && (sense == SENSE_MAX) != (m->sense == ZLR_SENSE_MAX)) w.sense = sense;
    if (m->cfix != 0.0) w.constant = param_int(params, IPAR_WRITE_CONSTANT);
    w.tiny = param_dou(params, DPAR_WRITE_TINY_COEF);
    w.numbers_names = param_int(params, IPAR_WRITE_NAMES) == WRITE_NAMES_NUMBER;
    w.name = param_str(params, SPAR_WRITE_PROBLEM_NAME);
    return w;
}

void drop_tiny(model *m, double tiny)
{
    sparse_columns *a = &m->a;
    size_t kept = 0;
    size_t begin = 0;
    for (size_t j = 0; j + 1 < a->start.size(); ++j) {
        const auto end = static_cast<size_t>(a->start[j + 1]);
        for (size_t k = begin; k < end; ++k) {
            if (std::fabs(a->value[k]) < tiny) continue;
            a->row[kept] = a->row[k];
            a->value[kept++] = a->value[k];
        }
        begin = end;
        a->start[j + 1] = static_cast<int64_t>(kept);
    }
    a->row.resize(kept);
    a->value.resize(kept);
}

double negated(double value) { return value == 0.0 ? 0.0 : -value; }

void turn_objective(model *m)
{
    m->sense = m->sense == ZLR_SENSE_MAX ? ZLR_SENSE_MIN : ZLR_SENSE_MAX;
    for (double &cost : m->c) cost = negated(cost);
    for (quad_term &term : m->qobj) term.value = negated(term.value);
    m->cfix = negated(m->cfix);
}

bool has_column(const model *m, const std::string &name)
{
    for (int32_t j = 0; j < m->num_var; ++j)
        if (names_get(&m->var_names, j) == name) return true;
    return false;
}

/* A column fixed at 1 that costs what the constant is. */
void put_constant_column(model *m)
{
    std::string name = "constant";
    while (has_column(m, name)) name += '_';
    const auto at = static_cast<size_t>(m->num_var);
    model_append_vars(m, 1);
    m->var_lower[at] = m->var_upper[at] = 1.0;
    m->c[at] = m->cfix;
    m->cfix = 0.0;
    names_put(&m->var_names, static_cast<int32_t>(at), name);
}

void number_names(model *m)
{
    names_clear(&m->con_names);
    names_clear(&m->var_names);
    names_resize(&m->con_names, m->num_con);
    names_resize(&m->var_names, m->num_var);
    m->obj_name.clear();
}

std::string one_line(const char *text)
{
    std::string line = text;
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, ' ');
    return line;
}
}  // namespace

const model *adjust_to_write(const io_context *io, const model *m, model *changed)
{
    const write_wishes w = wishes_of(io, m);
    const bool is_any = w.tiny > 0.0 || w.sense != SENSE_KEEP || w.constant != CONSTANT_KEEP || w.numbers_names;
    if (!is_any && w.name[0] == '\0') return m;

    *changed = *m;
    if (w.tiny > 0.0) drop_tiny(changed, w.tiny);
    if (w.sense != SENSE_KEEP) turn_objective(changed);
    if (w.constant == CONSTANT_COLUMN) put_constant_column(changed);
    if (w.constant == CONSTANT_OMIT) {
        io_warning(io, 0, "the constant %.17g of the objective is left out (WRITE_CONSTANT)", changed->cfix);
        changed->cfix = 0.0;
    }
    if (w.numbers_names) number_names(changed);
    if (w.name[0] != '\0') changed->name = w.name;
    return changed;
}

std::vector<std::string> adjust_comment(const io_context *io)
{
    std::vector<std::string> lines;
    if (io->params == nullptr) return lines;
    const int32_t header = param_int(io->params, IPAR_WRITE_HEADER);
    const char *comment = param_str(io->params, SPAR_WRITE_COMMENT);
    if (header != HEADER_NONE)
        lines.push_back(text_format("Written by ZELOR %d.%d.%d", version_major, version_minor, version_revision));
    if (header == HEADER_DATE) lines.back() += ", " + clock_text(clock_unix_ms());
    if (comment[0] != '\0') lines.push_back(one_line(comment));
    return lines;
}
