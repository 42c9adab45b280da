/* html.h - reads pages of HTML that our own code has written, for tests: whether tags balance, attributes are quoted,
 * entities are known, anchors lead somewhere and nothing is asked of anybody. Stricter than HTML itself: what browsers
 * would let pass is a mistake of ours all the same. */
#pragma once

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/* How a page reads; `complaint` is empty while all is well. */
struct html_reading {
    std::string complaint;
    std::vector<std::string> open; /* elements */
    std::set<std::string> ids;
    std::vector<std::string> anchors;
};

inline void html_complain(html_reading *r, std::string_view what, std::string_view where)
{
    if (r->complaint.empty()) r->complaint = std::string(what) + ": " + std::string(where.substr(0, 80));
}

/* Text between tags, or the value of an attribute. */
inline void html_read_text(html_reading *r, std::string_view text)
{
    for (size_t k = 0; k < text.size(); k++) {
        const auto c = static_cast<unsigned char>(text[k]);
        if ((c < 0x20 && c != '\n' && c != '\t') || c == 0x7f) html_complain(r, "control character", text.substr(k));
        if (c == '<' || c == '>') html_complain(r, "bare angle bracket", text.substr(k));
        if (c != '&') continue;
        const std::string_view entity = text.substr(k, text.find(';', k) - k + 1);
        static const char *const known[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
        if (std::find(std::begin(known), std::end(known), entity) == std::end(known))
            html_complain(r, "unknown entity", text.substr(k));
    }
}

inline void html_read_attribute(html_reading *r, const std::string &name, std::string_view value)
{
    html_read_text(r, value);
    if (name == "id" && !r->ids.insert(std::string(value)).second) html_complain(r, "id used twice", value);
    if (name == "href") {
        if (value.substr(0, 1) == "#")
            r->anchors.emplace_back(value.substr(1));
        else
            html_complain(r, "link to somewhere else", value);
    }
    if (name == "src" || name == "srcset" || name == "action" || name == "data" || name == "xlink:href")
        html_complain(r, "attribute that asks for something", name);
    if (name.substr(0, 2) == "on") html_complain(r, "script in an attribute", name);
    if (name == "d" || name == "viewBox" || name == "transform" || name == "cx" || name == "cy")
        if (value.find("nan") != std::string_view::npos || value.find("inf") != std::string_view::npos)
            html_complain(r, "coordinate that is no number", value);
}

/* What stands behind the element's name: name="value" or a name alone. */
inline void html_read_attributes(html_reading *r, std::string_view text)
{
    while (r->complaint.empty()) {
        while (!text.empty() && std::isspace(static_cast<unsigned char>(text[0])) != 0) text.remove_prefix(1);
        if (text.empty()) return;
        const size_t end = text.find_first_of("= ");
        const std::string name(text.substr(0, end));
        text.remove_prefix(std::min(end, text.size()));
        if (text.empty() || text[0] != '=') continue;
        const size_t close = text.size() > 2 && text[1] == '"' ? text.find('"', 2) : std::string_view::npos;
        if (close == std::string_view::npos) {
            html_complain(r, "attribute without quotes", text);
            return;
        }
        html_read_attribute(r, name, text.substr(2, close - 2));
        text.remove_prefix(close + 1);
    }
}

inline void html_read_tag(html_reading *r, std::string_view tag)
{
    const bool closes_itself = !tag.empty() && tag.back() == '/';
    if (closes_itself) tag.remove_suffix(1);
    if (!tag.empty() && tag[0] == '/') {
        if (r->open.empty() || r->open.back() != tag.substr(1))
            html_complain(r, "end of an element that is not the open one", tag);
        else
            r->open.pop_back();
        return;
    }
    const std::string name(tag.substr(0, tag.find_first_of(" \n")));
    static const char *const asking[] = {"script", "link", "img",  "iframe", "object",
                                         "embed",  "base", "form", "image",  "use"};
    if (std::find(std::begin(asking), std::end(asking), name) != std::end(asking))
        html_complain(r, "element that a page of ours does not have", name);
    html_read_attributes(r, tag.substr(name.size()));
    if (!closes_itself && name != "meta" && name != "br") r->open.push_back(name);
}

/* Where the tag that begins at `at` ends: quoted values may hold the bracket. */
inline size_t html_tag_end(std::string_view page, size_t at)
{
    bool is_quoted = false;
    for (size_t k = at; k < page.size(); k++) {
        if (page[k] == '"') is_quoted = !is_quoted;
        if (page[k] == '>' && !is_quoted) return k;
    }
    return std::string_view::npos;
}

inline void html_read_style(html_reading *r, std::string_view style)
{
    for (const char *what : {"url(", "@import", "<", "http"})
        if (style.find(what) != std::string_view::npos) html_complain(r, "style sheet that is not alone", what);
    if (std::count(style.begin(), style.end(), '{') != std::count(style.begin(), style.end(), '}'))
        html_complain(r, "style sheet whose braces do not balance", style);
}

/* The first thing wrong with a page; empty: nothing. */
inline std::string html_complaint(std::string_view page)
{
    static constexpr std::string_view doctype = "<!DOCTYPE html>\n", style_end = "</style>";
    html_reading r;
    if (page.substr(0, doctype.size()) != doctype) return "no doctype";
    page.remove_prefix(doctype.size());
    while (r.complaint.empty() && !page.empty()) {
        const size_t at = std::min(page.find('<'), page.size());
        html_read_text(&r, page.substr(0, at));
        page.remove_prefix(at);
        if (page.empty()) break;
        const size_t end = html_tag_end(page, 0);
        if (end == std::string_view::npos) return "a tag without an end: " + std::string(page.substr(0, 80));
        html_read_tag(&r, page.substr(1, end - 1));
        page.remove_prefix(end + 1);
        if (r.open.empty() || r.open.back() != "style") continue;
        const size_t close = std::min(page.find(style_end), page.size());
        html_read_style(&r, page.substr(0, close));
        page.remove_prefix(close);
    }
    for (const std::string &anchor : r.anchors)
        if (r.ids.count(anchor) == 0) html_complain(&r, "anchor to nowhere", anchor);
    if (!r.open.empty()) html_complain(&r, "element without an end", r.open.back());
    return r.complaint;
}

/* The text of the entry of a definition list, tags taken out; empty where there is none. */
inline std::string html_entry_text(std::string_view page, const std::string &label)
{
    const std::string begin = "<dt>" + label + "</dt><dd>";
    const size_t at = page.find(begin);
    if (at == std::string_view::npos) return "";
    page.remove_prefix(at + begin.size());
    std::string text;
    bool in_tag = false;
    for (const char c : page.substr(0, page.find("</dd>"))) {
        if (c == '<') in_tag = true;
        if (!in_tag) text += c;
        if (c == '>') in_tag = false;
    }
    return text;
}
