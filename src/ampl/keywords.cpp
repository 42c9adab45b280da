/* keywords.cpp - see ampl.h: the keyword table, which is made of the solver library's own list of parameters, and where
 * the solver's output goes. */
#include "ampl/ampl.h"

static constexpr int32_t num_own = 3;
static constexpr int32_t num_keywords = 270;
static constexpr size_t text_bytes = 1024;

/* Parameters of each class, which the table is made for. */
struct param_class {
    int32_t number;
    int32_t num;
};
static constexpr param_class param_classes[] = {{ZLR_PAR_DOUBLE, 70}, {ZLR_PAR_INT, 173}, {ZLR_PAR_STR, 24}};

/* Joints of 43 blanks: the column in which the text stood when it was first laid out. */
#define JOINT "                                           "
static constexpr char sensitivity_text[] =
    " Whether to return sensitivity information for the objective (in" JOINT
    "suffixes .up for the largest value of a" JOINT "variable's cost coefficient or constraint's" JOINT
    "right-hand side before the optimal basis" JOINT "changes, .down for the smallest such value ," JOINT
    "and .current for the current cost coefficient" JOINT "or right-hand side): 0 = no (default) 1 = yes.";
static_assert(sizeof sensitivity_text - 1 == 579);

static char usage_stub[] = "where  stub  is from  \"ampl -obstub\"  or  \"ampl -ogstub\".";
static char usage_blank[] = "  ";
static char *usage_lines[] = {usage_stub, usage_blank, nullptr};

/* ---- The table ---- */

static int32_t own_keyword(ZLR_task *task, keyword *row, const char *name, const char *text)
{
    row->name = ZLR_strduptask(task, name);
    row->desc = ZLR_strduptask(task, text);
    row->kf = ZLR_amplkeyword;
    return row->name == nullptr || row->name[0] == 0 || row->desc == nullptr ? ZLR_RES_ERR_SPACE : ZLR_RES_OK;
}

/* Puts a name into its place among `num` sorted rows, behind those that are equal. */
static void insert_keyword(keyword *rows, int32_t num, char *name)
{
    int32_t at = num;
    for (; at > 0 && std::strcmp(rows[at - 1].name, name) > 0; --at) rows[at] = rows[at - 1];
    rows[at] = keyword{};
    rows[at].name = name;
    rows[at].kf = ZLR_amplkeyword;
}

static int32_t add_parameter(ZLR_task *task, keyword *rows, int32_t num, int32_t number, int32_t index)
{
    char text[text_bytes] = "";
    const int32_t res = ZLR_getparamname(task, number, index, text);
    if (res != ZLR_RES_OK) return res;
    for (char *c = text; *c != 0; ++c) *c = static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    char *name = ZLR_strduptask(task, text);
    if (name == nullptr) return ZLR_RES_ERR_SPACE;
    insert_keyword(rows, num, name);
    return ZLR_RES_OK;
}

static int32_t fill_table(ZLR_task *task, keyword *rows)
{
    int32_t res = own_keyword(task, &rows[0], "outlev", "Controls amount of printed information");
    if (res == ZLR_RES_OK) res = own_keyword(task, &rows[1], "sensitivity", sensitivity_text);
    if (res == ZLR_RES_OK) res = own_keyword(task, &rows[2], "wantsol", "");
    int32_t num = num_own;
    for (const param_class &c : param_classes)
        for (int32_t k = 0; k < c.num && res == ZLR_RES_OK; ++k) res = add_parameter(task, rows, num++, c.number, k);
    return res;
}

int32_t ampl_make_options(ZLR_task *task, ampl_data *adat, Option_Info *options)
{
    int32_t v[4] = {};
    char version[text_bytes];
    (void)ZLR_getversion(&v[0], &v[1], &v[2], &v[3]);
    Sprintf(version, "ZELOR %d.%d.%d.%d", v[0], v[1], v[2], v[3]);

    options->sname = ZLR_strduptask(task, "zelor");
    options->bsname = ZLR_strduptask(task, version);
    options->opname = ZLR_strduptask(task, "zelor_options");
    options->version = ZLR_strduptask(task, version);
    options->flags = 1;
    options->usage = usage_lines;
    options->uinfo = reinterpret_cast<char *>(adat);
    options->option_echo = -2; /* all bits but the lowest: our lines stand in for the library's echo of assignments */
    if (options->sname == nullptr || options->bsname == nullptr || options->opname == nullptr ||
        options->version == nullptr)
        return ZLR_RES_ERR_SPACE;

    keyword *rows = nullptr;
    int32_t res = ampl_calloc(task, num_keywords, &rows);
    if (res != ZLR_RES_OK) return res;
    res = fill_table(task, rows);
    options->keywds = rows; /* whatever happened: the release finds what was made */
    options->n_keywds = num_keywords;
    return res;
}

void ampl_free_options(ZLR_task *task, Option_Info **options)
{
    Option_Info *o = *options;
    if (o == nullptr) return;
    ampl_free(task, &o->sname);
    ampl_free(task, &o->bsname);
    ampl_free(task, &o->opname);
    ampl_free(task, &o->version);
    for (int32_t k = 0; k < o->n_keywds; ++k) {
        keyword *row = &o->keywds[k];
        ampl_free(task, &row->name);
        if (row->info != nullptr) ZLR_freetask(task, row->info);
        ampl_free(task, &row->desc);
    }
    ampl_free(task, &o->keywds);
    ampl_free(task, options);
}

/* ---- Streams ---- */

void ZLR_amplmsgstream(void *handle, const char *text)
{
    Printf("%s", text);
    auto *adat = static_cast<ampl_data *>(handle);
    if (adat == nullptr || adat->task == nullptr) return;
    ++adat->msgcount;
    std::fflush(stdout);
}

void ZLR_amplerrstream(void *handle, const char *text)
{
    Fprintf(Stderr, "%s", text);
    auto *adat = static_cast<ampl_data *>(handle);
    if (adat != nullptr && adat->extended) ampl_note_error(adat, text);
}

/* ---- Assignments ---- */

static void to_upper(char *text)
{
    for (; *text != 0; ++text) *text = static_cast<char>(std::toupper(static_cast<unsigned char>(*text)));
}

/* Copies the value, in capitals as the keyword, and returns where it ends. With AMPL_EXTENDED a value keeps its case, and
 * one in double quotes may hold blanks. */
static char *take_value(const ampl_data *adat, char *value, char *out)
{
    while (*value == ' ') ++value;
    const bool quoted = adat->extended && *value == '"' && std::strchr(value + 1, '"') != nullptr;
    if (quoted) ++value;
    size_t num = 0;
    for (; *value != 0 && (quoted ? *value != '"' : *value != ' ' && *value != '\n'); ++value)
        if (num < text_bytes - 1) out[num++] = *value;
    out[num] = 0;
    if (!adat->extended) to_upper(out);
    return quoted ? value + 1 : value;
}

static void set_output_level(ampl_data *adat, long level)
{
    if (level == 0) return;
    if (level >= 2) (void)ZLR_putintparam(adat->task, ZLR_IPAR_LOG_LEVEL, 10);
    (void)ZLR_linkfunctotaskstream(adat->task, ZLR_STREAM_MSG, adat, ZLR_amplmsgstream);
    (void)ZLR_linkfunctotaskstream(adat->task, ZLR_STREAM_WRN, adat, ZLR_amplmsgstream);
    (void)ZLR_linkfunctotaskstream(adat->task, ZLR_STREAM_LOG, nullptr, nullptr);
}

char *ZLR_amplkeyword(Option_Info *options, keyword *row, char *value)
{
    /* Both as long as the library's own limit on a keyword's text. */
    char name[text_bytes];
    char text[text_bytes];
    auto *adat = reinterpret_cast<ampl_data *>(options->uinfo);
    std::strncpy(name, row->name, text_bytes - 1);
    name[text_bytes - 1] = 0;
    to_upper(name);
    char *end = take_value(adat, value, text);

    if (std::strcmp(name, "SENSITIVITY") == 0) { /* any value turns it on, 0 too: kept */
        adat->sensitivity = 1;
        return end;
    }
    if (std::strcmp(name, "WANTSOL") == 0) {
        (void)WS_val(options, row, text);
        return end;
    }
    int32_t outcome = ZLR_RES_OK;
    if (std::strcmp(name, "OUTLEV") == 0)
        set_output_level(adat, static_cast<int>(std::strtol(text, nullptr, 10)));
    else
        outcome = ZLR_putparam(adat->task, name, text);
    if (std::strcmp(name, "AMPL_EXTENDED") == 0) ampl_take_extended(adat);
    (void)ZLR_linkfunctotaskstream(adat->task, ZLR_STREAM_ERR, adat, ZLR_amplerrstream);
    Printf(outcome == ZLR_RES_OK ? "Accepted: %-35s = %s\n" : "Rejected: %-35s = %s\n", row->name, text);
    return end;
}
