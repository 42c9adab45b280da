/* names.cpp - see ampl.h: names of the objective, rows and columns, and the suffixes that are taken and returned. */
#include "ampl/ampl.h"

/* Whether there are names beside the stub. */
static bool has_names(const ASL *asl, int max_length, const char *extension)
{
    if (max_length <= 0) return false;
    std::FILE *file = std::fopen(ampl_path_beside(asl, extension).c_str(), "r");
    return file != nullptr && std::fclose(file) == 0;
}

/* Without .row and .col files nothing is put, whatever lengths the stub tells: the task's rows and columns have no names of
 * their own then, and none that the library would make up. */
int32_t ampl_put_names(ZLR_task *task, ASL *asl, int32_t objno)
{
    int32_t num_con = 0;
    int32_t num_var = 0;
    int32_t res = ZLR_RES_OK;
    if (objno >= 0 && objno < n_obj && obj_name(objno) != nullptr) res = ZLR_putobjname(task, obj_name(objno));
    if (res == ZLR_RES_OK) res = ZLR_getnumcon(task, &num_con);
    if (res == ZLR_RES_OK) res = ZLR_getnumvar(task, &num_var);
    if (has_names(asl, maxrownamelen, ".row"))
        for (int32_t i = 0; i < num_con && res == ZLR_RES_OK; ++i) res = ZLR_putconname(task, i, con_name(i));
    if (has_names(asl, maxcolnamelen, ".col"))
        for (int32_t j = 0; j < num_var && res == ZLR_RES_OK; ++j) res = ZLR_putvarname(task, j, var_name(j));
    return res;
}

static char sstatus[] = "sstatus";
static char current[] = "current";
static char down[] = "down";
static char up[] = "up";
static char priority[] = "priority";
static char direction[] = "direction";
static char cone[] = "cone";
static char rc[] = "rc";

/* In the order in which they have always been declared. The last row is AMPL_EXTENDED's. */
static SufDecl suffix_table[] = {
    {sstatus, nullptr, ASL_Sufkind_var, 0},
    {sstatus, nullptr, ASL_Sufkind_con, 0},
    {current, nullptr, ASL_Sufkind_con | ASL_Sufkind_outonly, 0},
    {current, nullptr, ASL_Sufkind_var | ASL_Sufkind_outonly, 0},
    {down, nullptr, ASL_Sufkind_con | ASL_Sufkind_outonly, 0},
    {down, nullptr, ASL_Sufkind_var | ASL_Sufkind_outonly, 0},
    {up, nullptr, ASL_Sufkind_con | ASL_Sufkind_outonly, 0},
    {up, nullptr, ASL_Sufkind_var | ASL_Sufkind_outonly, 0},
    {priority, nullptr, ASL_Sufkind_var, 0},
    {direction, nullptr, ASL_Sufkind_var, 0},
    {cone, nullptr, ASL_Sufkind_var, 0},
    {rc, nullptr, ASL_Sufkind_var | ASL_Sufkind_outonly, 0},
};
static constexpr int32_t num_suffixes = sizeof suffix_table / sizeof suffix_table[0];

int32_t ampl_declare_suffixes(ASL *asl, const ampl_data *adat, int32_t num_var, int32_t num_con,
                              stub_suffixes *suffixes)
{
    const auto num = static_cast<size_t>(num_var) + static_cast<size_t>(num_con);
    suffixes->status = static_cast<int *>(M1alloc(std::max<size_t>(num, 1) * sizeof(int)));
    if (suffixes->status == nullptr) return ZLR_RES_ERR_SPACE;
    std::fill_n(suffixes->status, num, 0); /* the library does not clear what it hands out */
    suf_declare(suffix_table, adat->extended ? num_suffixes : num_suffixes - 1);
    suffixes->varstatus = suf_iput(sstatus, ASL_Sufkind_var, suffixes->status);
    suffixes->constatus = suf_iput(sstatus, ASL_Sufkind_con, suffixes->status + num_var);
    /* Accepted, and handed to no one. */
    (void)suf_get(priority, ASL_Sufkind_var);
    (void)suf_get(direction, ASL_Sufkind_var);
    return ZLR_RES_OK;
}
