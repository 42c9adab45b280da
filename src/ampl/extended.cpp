/* extended.cpp - see ampl.h: what AMPL_EXTENDED=ON adds, for modelling clients that know an answer by its .sol file; and
 * what neither mode takes. */
#include "ampl/ampl.h"

void ampl_take_extended(ampl_data *adat)
{
    adat->extended = 0;
    (void)ZLR_getintparam(adat->task, ZLR_IPAR_AMPL_EXTENDED, &adat->extended);
    if (adat->extended) (void)ZLR_linkfunctotaskstream(adat->task, ZLR_STREAM_ERR, adat, ZLR_amplerrstream);
}

/* ---- Reasons ---- */

/* A blank line would end the message of a .sol file. */
void ampl_note_error(ampl_data *adat, const char *text)
{
    size_t num = std::strlen(adat->said);
    for (; *text != 0 && num < sizeof adat->said - 1; ++text)
        if (*text != '\n' || (num > 0 && adat->said[num - 1] != '\n')) adat->said[num++] = *text;
    adat->said[num] = 0;
}

void ampl_add_reason(const ampl_data *adat, char *report)
{
    const char *text = adat->reason != nullptr ? adat->reason : adat->said;
    const size_t num = std::strlen(text);
    if (num == 0) return;
    Sprintf(report + std::strlen(report), text[num - 1] == '\n' ? "%s" : "%s\n", text);
}

static bool is_keyword(const Option_Info *options, const std::string &name)
{
    for (int k = 0; k < options->n_keywds; ++k)
        if (name == options->keywds[k].name) return true;
    return false;
}

/* Takes a word, with the blanks that it holds in quotes. */
static std::string next_word(const char **text)
{
    std::string word;
    const char *c = *text;
    while (*c == ' ') ++c;
    for (bool quoted = false; *c != 0 && (quoted || *c != ' '); ++c) {
        if (*c == '"') quoted = !quoted;
        word += *c;
    }
    *text = c;
    return word;
}

/* The first name of "name=value" or "name value" that is no keyword; empty: all are. */
static std::string bad_word(const Option_Info *options, const char *text)
{
    for (std::string word = next_word(&text); !word.empty(); word = next_word(&text)) {
        const size_t sign = word.find('=');
        std::string name = word.substr(0, sign);
        if (!is_keyword(options, name)) return name;
        if (sign == std::string::npos) (void)next_word(&text);
    }
    return {};
}

void ampl_note_bad_option(ASL *asl, const Option_Info *options, char **words, const char *stub, ampl_data *adat)
{
    const char *variable = getenv(options->opname);
    std::string bad = variable == nullptr ? std::string() : bad_word(options, variable);
    for (; bad.empty() && *words != nullptr; ++words) bad = bad_word(options, *words);
    Snprintf(adat->said, sizeof adat->said, "%s is no option of this solver", bad.empty() ? "A word" : bad.c_str());

    FILE *file = nullptr;
    if (ampl_open_stub(asl, stub, &file) == ZLR_RES_OK && file != nullptr) (void)std::fclose(file);
}

/* ---- What is refused ---- */

int32_t ampl_refuse(ZLR_task *task, ampl_data *adat, const char *what)
{
    adat->reason = what;
    ZLR_echotask(task, ZLR_STREAM_MSG, "** Fatal error: %s\n", what);
    return ZLR_RES_ERR_AMPL_STUB;
}

int32_t ampl_refuse_by_header(ZLR_task *task, const ASL *asl, ampl_data *adat)
{
    if (n_cc > 0) return ampl_refuse(task, adat, "the model has complementarity conditions, which are not solved");
    if (n_lcon > 0) return ampl_refuse(task, adat, "the model has logical constraints, which are not solved");
    return ZLR_RES_OK;
}

int32_t ampl_refuse_sets(ZLR_task *task, ampl_data *adat)
{
    return ampl_refuse(task, adat, "the model has special ordered sets, which are not solved");
}

/* ---- Additions ---- */

static int32_t mark_run(ZLR_task *task, int32_t end, int32_t num)
{
    int32_t res = ZLR_RES_OK;
    for (int32_t j = end - num; j < end && res == ZLR_RES_OK; ++j) res = ZLR_putvartype(task, j, ZLR_VAR_INT);
    return res;
}

/* The integer columns stand last in each group of columns: in both constraints and objectives, in constraints alone, in
 * objectives alone, and the linear ones. */
int32_t ampl_mark_integers(ZLR_task *task, ASL *asl)
{
    int32_t res = mark_run(task, nlvb, nlvbi);
    if (res == ZLR_RES_OK) res = mark_run(task, nlvc, nlvci);
    if (res == ZLR_RES_OK) res = mark_run(task, nlvo, nlvoi);
    return res == ZLR_RES_OK ? mark_run(task, n_var, nbv + niv) : res;
}

/* A step of the solve codes for each kind of failure, so that a script can tell them; clients fail on 600 and above. */
int32_t ampl_failure_code(int32_t result)
{
    /* Of AMPL's ranges for infeasible and unbounded models, apart from the codes for those that are proved to be so. */
    if (result == ZLR_RES_TRM_LOCAL_INFEASIBLE) return 210;
    if (result == ZLR_RES_TRM_DIVERGING) return 310;
    if (result >= ZLR_RES_TRM_USER_STOP) return 400;
    switch (result) {
    case ZLR_RES_ERR_FILE_READ: return 510;
    case ZLR_RES_ERR_AMPL_STUB: return 520;
    case ZLR_RES_ERR_NONCONVEX:
    case ZLR_RES_ERR_QCON_EQUALITY:
    case ZLR_RES_ERR_QCON_RANGE:
    case ZLR_RES_ERR_CONE: return 530;
    case ZLR_RES_ERR_NL_EVALUATION: return 550;
    case ZLR_RES_ERR_NO_ENGINE:
    case ZLR_RES_ERR_NOT_AVAILABLE: return 540;
    default: return 500;
    }
}

/* Where the library has read no header: the options that AMPL commonly sends, so that the .sol file has all of its parts. */
static void assume_options(ASL *asl)
{
    static constexpr fint usual[] = {3, 1, 1, 0};
    if (ampl_options[0] != 0) return;
    std::copy_n(usual, 4, ampl_options);
    asl->i.flags |= 1; /* AMPL takes solve codes */
}

void ampl_report_failure(ASL *asl, Option_Info *options, int32_t result, const ampl_data *adat, int32_t *code)
{
    char text[1024] = "";
    char report[4096];
    (void)ZLR_getcodedesc(result, nullptr, text);
    Sprintf(report, "ZELOR finished.\nZELOR return code - %d (%s)\n", result, text);
    ampl_add_reason(adat, report);
    solve_code = ampl_failure_code(result);
    if (code != nullptr) *code = solve_code;
    assume_options(asl);
    if (asl->i.filename_ != nullptr) ampl_write_answer(asl, report, nullptr, nullptr, options);
}

int32_t ampl_put_reduced_costs(ASL *asl, ampl_data *adat, int32_t kind)
{
    static char rc[] = "rc";
    double *cost = static_cast<double *>(M1alloc(static_cast<size_t>(n_var + 1) * sizeof(double)));
    double *upper = nullptr;
    int32_t res = cost == nullptr ? ZLR_RES_ERR_SPACE : ampl_calloc(adat->task, n_var, &upper);
    if (res == ZLR_RES_OK)
        res = ZLR_getsolution(adat->task, kind, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr, cost, upper, nullptr);
    if (res == ZLR_RES_OK) {
        for (int32_t j = 0; j < n_var; ++j) cost[j] -= upper[j];
        suf_rput(rc, ASL_Sufkind_var, cost);
    }
    ampl_free(adat->task, &upper);
    return res;
}
