/* nl_text.cpp - see nl_text.h. */
#include "support/nl_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>

/* One item after the other, in one of the forms. A line of the text form begins with a letter or a number. */
struct nl_sink {
    nl_form form;
    std::string out;
    bool at_begin = true; /* of a line */
};

static std::string shortest(double value)
{
    char text[40];
    for (int digits = 1; digits <= 17; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, value);
        if (std::strtod(text, nullptr) == value) break;
    }
    return text;
}

static void put_bytes(nl_sink *sink, const void *value, size_t size)
{
    std::string bytes(static_cast<const char *>(value), size);
    if (sink->form == NL_SWAPPED) std::reverse(bytes.begin(), bytes.end());
    sink->out += bytes;
}

static void put_text(nl_sink *sink, const std::string &text)
{
    if (!sink->at_begin) sink->out += ' ';
    sink->out += text;
    sink->at_begin = false;
}

static void put_letter(nl_sink *sink, char letter)
{
    sink->out += letter;
    sink->at_begin = true;
}

static void put_integer(nl_sink *sink, int value)
{
    if (sink->form == NL_TEXT)
        put_text(sink, std::to_string(value));
    else
        put_bytes(sink, &value, sizeof value);
}

static void put_real(nl_sink *sink, double value)
{
    if (sink->form == NL_TEXT)
        put_text(sink, shortest(value));
    else
        put_bytes(sink, &value, sizeof value);
}

static void put_name(nl_sink *sink, const std::string &name)
{
    if (sink->form != NL_TEXT) put_integer(sink, static_cast<int>(name.size()));
    if (sink->form == NL_TEXT)
        put_text(sink, name);
    else
        sink->out += name;
}

static void end_line(nl_sink *sink)
{
    if (sink->form == NL_TEXT) sink->out += '\n';
    sink->at_begin = true;
}

/* ---- Parts ---- */

static void put_terms(nl_sink *sink, const nl_terms &terms)
{
    for (const auto &[index, value] : terms) {
        put_integer(sink, index);
        put_real(sink, value);
        end_line(sink);
    }
}

static void put_expression(nl_sink *sink, const nl_expression &expression)
{
    std::istringstream lines(expression);
    std::string line;
    while (std::getline(lines, line)) {
        const bool is_letter = line[0] >= 'a' && line[0] <= 'z';
        if (is_letter) put_letter(sink, line[0]);
        if (is_letter && line[0] == 'n') {
            put_real(sink, std::strtod(line.c_str() + 1, nullptr));
        } else {
            std::istringstream words(line.substr(is_letter ? 1 : 0));
            int value = 0;
            while (words >> value) put_integer(sink, value);
        }
        end_line(sink);
    }
}

static void put_bound(nl_sink *sink, double lower, double upper)
{
    const bool has_lower = lower > -nl_infinite;
    const bool has_upper = upper < nl_infinite;
    const char kind = !has_lower && !has_upper ? '3' : lower == upper ? '4' : !has_lower ? '1' : !has_upper ? '2' : '0';
    put_letter(sink, kind);
    if (sink->form == NL_TEXT) sink->at_begin = false; /* numbers stand behind a blank here */
    if (has_lower) put_real(sink, lower);
    if (has_upper && kind != '4') put_real(sink, upper);
    end_line(sink);
}

/* The header is text in all forms. */
static std::string header(const nl_model &m, nl_form form)
{
    size_t nlc = 0, nlo = 0, nzc = 0, nzo = 0, ranges = 0, equations = 0;
    for (const nl_row &row : m.rows) {
        if (!row.nonlinear.empty()) ++nlc;
        nzc += row.linear.size();
        if (row.lower == row.upper)
            ++equations;
        else if (row.lower > -nl_infinite && row.upper < nl_infinite)
            ++ranges;
    }
    for (const nl_objective &objective : m.objectives) {
        if (!objective.nonlinear.empty()) ++nlo;
        nzo += objective.linear.size();
    }
    const uint16_t probe = 1;
    const bool is_little = *reinterpret_cast<const unsigned char *>(&probe) == 1;
    const int arithmetic = form == NL_TEXT ? 0 : is_little == (form == NL_BINARY) ? 1 : 2;
    std::ostringstream out;
    out << (form == NL_TEXT ? "g" : "b") << "3 1 1 0\t# problem test\n";
    out << " " << m.columns.size() << " " << m.rows.size() << " " << m.objectives.size() << " " << ranges << " "
        << equations << " " << m.num_logical << "\t# vars, constraints, objectives, ranges, eqns, lcons\n";
    out << " " << nlc << " " << nlo << " " << m.num_complementarities
        << " 0 0 0\t# nonlinear constraints, objs; ccons\n";
    out << " 0 0\t# network constraints: nonlinear, linear\n";
    out << " " << m.nlvc << " " << m.nlvo << " " << m.nlvb << "\t# nonlinear vars in constraints, objectives, both\n";
    out << " 0 " << m.functions.size() << " " << arithmetic
        << " 1\t# linear network variables; functions; arith, flags\n";
    out << " " << m.nbv << " " << m.niv << " " << m.nlvbi << " " << m.nlvci << " " << m.nlvoi
        << "\t# discrete variables\n";
    out << " " << nzc << " " << nzo << "\t# nonzeros in Jacobian, gradients\n";
    out << " " << m.max_row_name << " " << m.max_column_name << "\t# max name lengths: constraints, variables\n";
    out << " " << m.commons.size() << " 0 0 0 0\t# common exprs: b,c,o,c1,o1\n";
    return out.str();
}

static void put_functions_and_suffixes(nl_sink *sink, const nl_model &m)
{
    for (size_t k = 0; k < m.functions.size(); ++k) {
        put_letter(sink, 'F');
        put_integer(sink, static_cast<int>(k));
        put_integer(sink, 0);
        put_integer(sink, m.functions[k].num_args);
        put_name(sink, m.functions[k].name);
        end_line(sink);
    }
    for (const nl_suffix &suffix : m.suffixes) {
        put_letter(sink, 'S');
        put_integer(sink, suffix.kind);
        put_integer(sink, static_cast<int>(suffix.values.size()));
        put_name(sink, suffix.name);
        end_line(sink);
        for (const auto &[index, value] : suffix.values) {
            put_integer(sink, index);
            if (suffix.kind & 4)
                put_real(sink, value);
            else
                put_integer(sink, static_cast<int>(value));
            end_line(sink);
        }
    }
}

static void put_segment(nl_sink *sink, char letter, const std::vector<int> &numbers)
{
    put_letter(sink, letter);
    for (const int number : numbers) put_integer(sink, number);
    end_line(sink);
}

static void put_functions_of_model(nl_sink *sink, const nl_model &m)
{
    const std::string zero = "n0\n";
    for (size_t k = 0; k < m.commons.size(); ++k) {
        const int number = static_cast<int>(m.columns.size() + k);
        put_segment(sink, 'V', {number, static_cast<int>(m.commons[k].linear.size()), 0});
        put_terms(sink, m.commons[k].linear);
        put_expression(sink, m.commons[k].nonlinear);
    }
    for (size_t i = 0; i < m.rows.size(); ++i) {
        put_segment(sink, 'C', {static_cast<int>(i)});
        put_expression(sink, m.rows[i].nonlinear.empty() ? zero : m.rows[i].nonlinear);
    }
    for (size_t k = 0; k < m.objectives.size(); ++k) {
        const nl_objective &o = m.objectives[k];
        put_segment(sink, 'O', {static_cast<int>(k), o.maximise ? 1 : 0});
        put_expression(sink, o.nonlinear.empty() ? nl_number(o.constant) : o.nonlinear);
    }
}

static void put_matrix(nl_sink *sink, const nl_model &m)
{
    std::vector<int> ends(m.columns.size());
    for (const nl_row &row : m.rows)
        for (const auto &[j, value] : row.linear)
            if (j >= 0 && static_cast<size_t>(j) < ends.size()) ++ends[static_cast<size_t>(j)];
    if (!m.rows.empty()) {
        put_segment(sink, 'k', {static_cast<int>(m.columns.size()) - 1});
        int end = 0;
        for (size_t j = 0; j + 1 < ends.size(); ++j) {
            put_integer(sink, end += ends[j]);
            end_line(sink);
        }
    }
    for (size_t i = 0; i < m.rows.size(); ++i) {
        if (m.rows[i].linear.empty()) continue;
        put_segment(sink, 'J', {static_cast<int>(i), static_cast<int>(m.rows[i].linear.size())});
        put_terms(sink, m.rows[i].linear);
    }
    for (size_t k = 0; k < m.objectives.size(); ++k) {
        if (m.objectives[k].linear.empty()) continue;
        put_segment(sink, 'G', {static_cast<int>(k), static_cast<int>(m.objectives[k].linear.size())});
        put_terms(sink, m.objectives[k].linear);
    }
}

std::string nl_text(const nl_model &model, nl_form form)
{
    nl_sink sink = {form, header(model, form), true};
    put_functions_and_suffixes(&sink, model);
    put_functions_of_model(&sink, model);
    if (!model.x.empty()) {
        put_segment(&sink, 'x', {static_cast<int>(model.x.size())});
        put_terms(&sink, model.x);
    }
    if (!model.y.empty()) {
        put_segment(&sink, 'd', {static_cast<int>(model.y.size())});
        put_terms(&sink, model.y);
    }
    if (!model.rows.empty()) {
        put_segment(&sink, 'r', {});
        for (const nl_row &row : model.rows) put_bound(&sink, row.lower, row.upper);
    }
    put_segment(&sink, 'b', {});
    for (const nl_column &column : model.columns) put_bound(&sink, column.lower, column.upper);
    put_matrix(&sink, model);
    return sink.out;
}

/* ---- Expressions ---- */

nl_expression nl_number(double value) { return "n" + shortest(value) + "\n"; }
nl_expression nl_variable(int j) { return "v" + std::to_string(j) + "\n"; }
nl_expression nl_product(const nl_expression &a, const nl_expression &b) { return "o2\n" + a + b; }
nl_expression nl_plus(const nl_expression &a, const nl_expression &b) { return "o0\n" + a + b; }
nl_expression nl_square(int j) { return "o5\n" + nl_variable(j) + nl_number(2); }
nl_expression nl_exp(const nl_expression &a) { return "o44\n" + a; }

/* ---- Damage ---- */

static std::vector<std::string> lines_of(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) lines.push_back(line + "\n");
    return lines;
}

static std::string together(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) text += line;
    return text;
}

std::string nl_without_line(const std::string &text, int number)
{
    std::vector<std::string> lines = lines_of(text);
    lines.erase(lines.begin() + number - 1);
    return together(lines);
}

std::string nl_with_line(const std::string &text, int number, const std::string &line)
{
    std::vector<std::string> lines = lines_of(text);
    lines.at(static_cast<size_t>(number) - 1) = line + "\n";
    return together(lines);
}

int nl_count_lines(const std::string &text) { return static_cast<int>(lines_of(text).size()); }
