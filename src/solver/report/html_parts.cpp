/* html_parts.cpp - what the sections are written with. See html_parts.h. */
#include "solver/report/html_parts.h"

#include "solver/report/html_text.h"

#include <cmath>

void html_begin(std::string *page, const char *id, std::string_view title)
{
    text_append(page, "<section id=\"%s\" aria-labelledby=\"%s-title\">\n<h2 id=\"%s-title\">", id, id, id);
    *page += title;
    *page += "</h2>\n";
}

void html_end(std::string *page) { *page += "</section>\n"; }

void html_entry(std::string *page, const char *label, std::string_view value_html)
{
    if (value_html.empty()) return;
    text_append(page, "<div><dt>%s</dt><dd>", label);
    *page += value_html;
    *page += "</dd></div>\n";
}

void html_paragraph(std::string *page, const char *css, std::string_view text_html)
{
    *page += css[0] != '\0' ? std::string("<p class=\"") + css + "\">" : "<p>";
    *page += text_html;
    *page += "</p>\n";
}

void html_table_begin(std::string *page, std::string_view title_html, std::initializer_list<std::string_view> heads,
                      size_t num_text)
{
    size_t at = 0;
    *page += "<div>\n";
    if (!title_html.empty()) { /* no caption, which would be as narrow as the table */
        *page += "<h3>";
        *page += title_html;
        *page += "</h3>\n";
    }
    *page += "<div class=\"scroll\"><table>\n<thead><tr>";
    for (const std::string_view head : heads) {
        *page += at++ < num_text ? "<th scope=\"col\">" : "<th scope=\"col\" class=\"num\">";
        *page += head;
        *page += "</th>";
    }
    *page += "</tr></thead>\n<tbody>\n";
}

void html_table_row(std::string *page, std::initializer_list<std::string_view> cells, size_t num_text)
{
    size_t at = 0;
    *page += "<tr>";
    for (const std::string_view cell : cells) {
        const bool is_text = at < num_text;
        if (at == 0)
            *page += is_text ? "<th scope=\"row\">" : "<th scope=\"row\" class=\"num\">";
        else
            *page += is_text ? "<td>" : "<td class=\"num\">";
        *page += cell;
        *page += at++ == 0 ? "</th>" : "</td>";
    }
    *page += "</tr>\n";
}

void html_table_end(std::string *page) { *page += "</tbody></table></div>\n</div>\n"; }

std::string html_row_name(const model *m, int32_t i)
{
    return i < 0 ? html_number(std::nan("")) : html_name(names_shown(&m->con_names, i, 'c'));
}

std::string html_column_name(const model *m, int32_t j)
{
    return j < 0 ? html_number(std::nan("")) : html_name(names_shown(&m->var_names, j, 'x'));
}

std::string html_cone_name(const model *m, int32_t cone)
{
    return html_column_name(m, cone < 0 ? -1 : m->cones[static_cast<size_t>(cone)].member[0]);
}
