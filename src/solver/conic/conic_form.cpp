/* conic_form.cpp - makes the conic form: see conic_form.h. */
#include "solver/conic/conic_form.h"

#include <algorithm>

struct new_column {
    std::string name;
    double cost, lower, upper;
};

struct new_entry {
    int32_t row, column;
    double value;
};

/* The form under way. What is new is gathered and put into it once, so that the matrix is built anew but once. */
struct form_builder {
    const model *m;
    model *form;
    conic_map *map;
    std::vector<new_column> columns;
    std::vector<std::string> rows; /* all equal 0 */
    std::vector<new_entry> entries;
    std::vector<uint8_t> in_cone; /* by column of the problem */
    work_effort *effort;
    double tolerance;
};

static int32_t add_column(form_builder *b, const std::string &name, double cost, double lower, double upper)
{
    b->columns.push_back({name, cost, lower, upper});
    return b->m->num_var + static_cast<int32_t>(b->columns.size()) - 1;
}

/* column = linear form k, by a row of the same name. */
static int32_t add_linked_column(form_builder *b, const std::string &name, const linear_forms *forms, int64_t k,
                                 int32_t *link)
{
    const int32_t column = add_column(b, name, 0.0, -model_inf, model_inf);
    const int32_t row = b->m->num_con + static_cast<int32_t>(b->rows.size());
    b->rows.push_back(name);
    b->entries.push_back({row, column, 1.0});
    for (auto e = static_cast<size_t>(forms->start[static_cast<size_t>(k)]);
         e < static_cast<size_t>(forms->start[static_cast<size_t>(k) + 1]); e++)
        b->entries.push_back({row, forms->column[e], -forms->value[e]});
    if (link != nullptr) *link = row;
    return column;
}

/* A new column that is at least x'Qx/2, of the form with its sign. Returns it, or -1 where the form is 0. */
static int32_t add_epigraph(form_builder *b, const std::string &name, const std::vector<quad_term> &terms, double sign,
                            double cost)
{
    const quad_parts parts = quad_split(terms, b->effort, b->tolerance);
    linear_forms forms;
    for (int32_t p = 0; p < quad_num_parts(&parts); p++) {
        const quad_part part = quad_part_at(&parts, p);
        quad_part_factor(&part, sign, &forms, b->effort);
    }
    if (forms_num(&forms) == 0) return -1;
    model_cone cone;
    cone.type = ZLR_CT_RQUAD;
    cone.member.push_back(add_column(b, name + ".w", cost, 0.0, model_inf));
    cone.member.push_back(add_column(b, name + ".h", 0.0, 1.0, 1.0));
    for (int64_t k = 0; k < forms_num(&forms); k++)
        cone.member.push_back(add_linked_column(b, name + ".t" + std::to_string(k + 1), &forms, k, nullptr));
    b->form->cones.push_back(std::move(cone));
    return b->form->cones.back().member[0];
}

/* ---- cones in disguise */

/* The member for linear form k of `forms`: a column itself where it may be. */
static int32_t add_member(form_builder *b, const std::string &name, const linear_forms *forms, int64_t k,
                          size_t *num_new)
{
    const auto begin = static_cast<size_t>(forms->start[static_cast<size_t>(k)]);
    const auto end = static_cast<size_t>(forms->start[static_cast<size_t>(k) + 1]);
    conic_member member = {-1, -1, forms_num(&b->map->forms), 1};
    const bool alone = end - begin == 1 && forms->value[begin] == 1.0;
    if (alone && b->in_cone[static_cast<size_t>(forms->column[begin])] == 0) {
        member.column = forms->column[begin];
        b->in_cone[static_cast<size_t>(member.column)] = 1;
    } else {
        member.column = add_linked_column(b, name + ".t" + std::to_string(++*num_new), forms, k, &member.link);
    }
    linear_forms *kept = &b->map->forms;
    const auto from = static_cast<std::ptrdiff_t>(begin), to = static_cast<std::ptrdiff_t>(end);
    kept->column.insert(kept->column.end(), forms->column.begin() + from, forms->column.begin() + to);
    kept->value.insert(kept->value.end(), forms->value.begin() + from, forms->value.begin() + to);
    kept->start.push_back(static_cast<int64_t>(kept->column.size()));
    b->map->member.push_back(member);
    return member.column;
}

static void add_disguised(form_builder *b, const disguised_cone *source)
{
    const std::string name = names_shown(&b->m->con_names, source->row, 'c');
    linear_forms heads;
    for (size_t k = 0; k < cone_num_heads(source->type); k++) {
        heads.column.push_back(source->head[k]);
        heads.value.push_back(1.0);
        heads.start.push_back(static_cast<int64_t>(heads.column.size()));
    }
    conic_disguised entry = {source->row, source->type, static_cast<int64_t>(b->map->member.size()), 0};
    model_cone cone;
    size_t num_new = 0;
    cone.type = source->type;
    for (const linear_forms *forms : {static_cast<const linear_forms *>(&heads), &source->tail})
        for (int64_t k = 0; k < forms_num(forms); k++) cone.member.push_back(add_member(b, name, forms, k, &num_new));
    if (source->constant > 0.0 || forms_num(&source->tail) == 0)
        cone.member.push_back(add_column(b, name + ".h", 0.0, source->constant, source->constant));
    b->form->cones.push_back(std::move(cone));
    entry.num = static_cast<int64_t>(b->map->member.size()) - entry.first;
    b->map->disguised.push_back(entry);
    b->form->con_lower[static_cast<size_t>(source->row)] = -model_inf;
    b->form->con_upper[static_cast<size_t>(source->row)] = model_inf;
}

static void add_rows(form_builder *b, const std::vector<disguised_cone> *disguised)
{
    auto next = disguised->begin();
    for (const quad_row &q : b->m->qcon) {
        if (effort_is_over(b->effort)) return;
        const double sign = convexity_row_sign(b->m, q.row);
        if (next != disguised->end() && next->row == q.row) {
            add_disguised(b, &*next++);
        } else if (sign == 0.0) {
            b->map->freed_rows++;
        } else {
            const std::string name = names_shown(&b->m->con_names, q.row, 'c');
            const int32_t w = add_epigraph(b, name, q.terms, sign, 0.0);
            if (w >= 0) b->entries.push_back({q.row, w, sign});
            b->map->convex_rows++;
        }
    }
}

static void add_objective(form_builder *b)
{
    const std::string name = b->m->obj_name.empty() ? "obj" : b->m->obj_name;
    const double sign = convexity_objective_sign(b->m);
    add_epigraph(b, name, b->m->qobj, sign, sign);
    b->form->qobj.clear();
    b->map->moved_objective = true;
}

/* ---- what is new goes into the form */

/* Puts a name, or one like it that is free. */
static void put_free_name(name_table *table, name_index *index, int32_t i, std::string name)
{
    while (name_index_find(index, table, name) >= 0) name += '_';
    names_put(table, i, name);
    (void)name_index_add(index, table, i);
}

/* Old entries of a column come first, then the new ones by row, as they were gathered. */
static void put_entries(const form_builder *b)
{
    sparse_columns *a = &b->form->a;
    const auto num_var = static_cast<size_t>(b->form->num_var);
    std::vector<int64_t> start(num_var + 1, 0);
    for (size_t j = 0; j < num_var; j++) start[j + 1] = a->start[j + 1] - a->start[j];
    for (const new_entry &e : b->entries) start[static_cast<size_t>(e.column) + 1]++;
    for (size_t j = 0; j < num_var; j++) start[j + 1] += start[j];

    const size_t total = a->row.size() + b->entries.size();
    std::vector<int32_t> row(total);
    std::vector<double> value(total);
    std::vector<int64_t> next(num_var);
    for (size_t j = 0; j < num_var; j++) {
        const int64_t old = a->start[j + 1] - a->start[j];
        std::copy_n(a->row.begin() + a->start[j], old, row.begin() + start[j]);
        std::copy_n(a->value.begin() + a->start[j], old, value.begin() + start[j]);
        next[j] = start[j] + old;
    }
    for (const new_entry &e : b->entries) {
        const auto at = static_cast<size_t>(next[static_cast<size_t>(e.column)]++);
        row[at] = e.row;
        value[at] = e.value;
    }
    a->start = std::move(start);
    a->row = std::move(row);
    a->value = std::move(value);
}

static void put_new(const form_builder *b)
{
    model *form = b->form;
    name_index vars, cons;
    (void)name_index_build(&vars, &form->var_names);
    (void)name_index_build(&cons, &form->con_names);
    model_append_vars(form, static_cast<int32_t>(b->columns.size()));
    model_append_cons(form, static_cast<int32_t>(b->rows.size()));
    for (size_t k = 0; k < b->columns.size(); k++) {
        const size_t j = static_cast<size_t>(b->m->num_var) + k;
        form->c[j] = b->columns[k].cost;
        form->var_lower[j] = b->columns[k].lower;
        form->var_upper[j] = b->columns[k].upper;
        put_free_name(&form->var_names, &vars, static_cast<int32_t>(j), b->columns[k].name);
    }
    for (size_t k = 0; k < b->rows.size(); k++) {
        const size_t i = static_cast<size_t>(b->m->num_con) + k;
        form->con_lower[i] = form->con_upper[i] = 0.0;
        put_free_name(&form->con_names, &cons, static_cast<int32_t>(i), b->rows[k]);
    }
    if (!b->entries.empty()) put_entries(b);
}

static bool has_room(const form_builder *b)
{
    const auto fits = [](int32_t old, size_t more) { return more <= static_cast<size_t>(INT32_MAX - old); };
    return fits(b->m->num_var, b->columns.size()) && fits(b->m->num_con, b->rows.size());
}

/* What is copied, and what is new with its names, by the entry. */
static constexpr double copy_steps = 10.0, new_steps = 800.0;

static double size_of(const model *m)
{
    return static_cast<double>(m->num_con) + static_cast<double>(m->num_var) + static_cast<double>(m->a.row.size());
}

int32_t conic_form(const model *m, bool keep_objective, std::shared_ptr<model> *form, conic_map *map,
                   std::string *message, work_effort *effort, const convexity_rules &rules)
{
    form->reset();
    *map = {};
    message->clear();
    convexity found = convexity_check(m, effort, rules);
    if (effort_is_over(effort)) return ZLR_RES_OK;
    if (found.code != ZLR_RES_OK) {
        *message = std::move(found.message);
        return found.code;
    }
    if (!effort_take(effort, copy_steps * size_of(m))) return ZLR_RES_OK;
    auto made = std::make_shared<model>(*m);
    made->qcon.clear();
    map->num_con = m->num_con;
    map->num_var = m->num_var;
    map->num_cones = model_num_cones(m);

    form_builder b = {m,      made.get(),     map, {}, {}, {}, std::vector<uint8_t>(static_cast<size_t>(m->num_var)),
                      effort, rules.tolerance};
    for (const model_cone &cone : m->cones)
        for (const int32_t j : cone.member) b.in_cone[static_cast<size_t>(j)] = 1;
    add_rows(&b, &found.disguised);
    if (!keep_objective && !m->qobj.empty()) add_objective(&b);
    if (!has_room(&b)) {
        *message = "The conic form has more rows or columns than there are numbers for.\n";
        return ZLR_RES_ERR_SPACE;
    }
    map->new_var = static_cast<int32_t>(b.columns.size());
    map->new_con = static_cast<int32_t>(b.rows.size());
    map->new_cones = model_num_cones(made.get()) - map->num_cones;
    if (!effort_take(effort, copy_steps * size_of(m) + new_steps * static_cast<double>(b.entries.size())))
        return ZLR_RES_OK;
    put_new(&b);
    *form = std::move(made);
    return ZLR_RES_OK;
}
