/* cones.cpp - see ampl.h: second-order cones by the suffix "cone" of the columns.
 *
 * A value v other than 0 puts the column into cone number |v|, counted from 1; a negative one makes it a root. One root is
 * the head of a quadratic cone, two are the heads of a rotated one. Messages count cones from 0. */
#include "ampl/ampl.h"

/* Numbers in messages that people search for; they have stayed while the lines they once named have moved. */
static constexpr int out_of_space_line = 1772;
static constexpr int list_line = 1643;

struct cone_lists {
    int32_t num;     /* cones */
    int32_t *start;  /* num + 1; of each cone's members */
    int32_t *member; /* columns by cone */
};

/* Lists every column, those in no cone too: kept. */
static void count_members(ZLR_task *task, int32_t num_var, const int *value, cone_lists *lists)
{
    static constexpr int32_t name_bytes = 1024;
    char name[name_bytes] = "";
    for (int32_t j = 0; j < num_var; ++j) {
        Printf("%d> XX variable: %-6d cone: %-6d", list_line, j, value[j]);
        (void)ZLR_getvarname(task, j, name_bytes, name);
        Printf("  '%-s'\n", name);
        if (value[j] != 0) ++lists->start[std::abs(value[j]) - 1];
    }
    for (int32_t k = 0; k < lists->num; ++k) Printf("?%d\n", lists->start[k]);
}

/* Counts become starts, and each cone's columns stand in ascending order. */
static void fill_lists(int32_t num_var, const int *value, cone_lists *lists)
{
    int32_t total = 0;
    for (int32_t k = 0; k <= lists->num; ++k) {
        const int32_t count = lists->start[k];
        lists->start[k] = total;
        total += count;
    }
    for (int32_t j = 0; j < num_var; ++j)
        if (value[j] != 0) lists->member[lists->start[std::abs(value[j]) - 1]++] = j;
    for (int32_t k = lists->num; k > 0; --k) lists->start[k] = lists->start[k - 1];
    lists->start[0] = 0;
}

/* Brings the roots to the front and appends the cone. */
static int32_t put_cone(ZLR_task *task, const int *value, cone_lists *lists, int32_t k)
{
    int32_t *member = lists->member + lists->start[k];
    const int32_t num = lists->start[k + 1] - lists->start[k];
    int32_t num_roots = 0;
    for (int32_t p = 0; p < num; ++p)
        if (value[member[p]] < 0) std::swap(member[p], member[num_roots++]);
    if (num_roots == 0) {
        Printf(" *** Error: ");
        Printf("No root specified for cone: %d\n", k);
        return ZLR_RES_ERR_CONE;
    }
    if (num_roots > 2) {
        Printf(" *** Error: ");
        Printf("%d roots specified for cone %d. Has to be >=1 and <=2.\n", num_roots, k);
        return ZLR_RES_ERR_CONE;
    }
    return ZLR_appendcone(task, num_roots == 1 ? ZLR_CT_QUAD : ZLR_CT_RQUAD, 0.0, num, member);
}

static int32_t put_cones(ZLR_task *task, int32_t num_var, const int *value, cone_lists *lists)
{
    int32_t res = ampl_calloc(task, lists->num + 1, &lists->start);
    if (res == ZLR_RES_OK) res = ampl_calloc(task, num_var, &lists->member);
    if (res != ZLR_RES_OK) {
        Printf(" *** Error: ");
        Printf("Out space at line %d\n", out_of_space_line);
        return res;
    }
    count_members(task, num_var, value, lists);
    fill_lists(num_var, value, lists);
    res = ZLR_putmaxnumcone(task, lists->num);
    for (int32_t k = 0; k < lists->num && res == ZLR_RES_OK; ++k) res = put_cone(task, value, lists, k);
    return res;
}

/* Cone numbers up to this are listed, whatever the count of columns. */
static constexpr int64_t listed_numbers = 1000000;

/* Numbers that go far beyond the count of columns: some number below has no column, and lists of such a length are not
 * tried. The first such number is told. */
static int32_t refuse_numbers(ZLR_task *task, int32_t num_var, const int *value)
{
    char *found = nullptr;
    const int32_t res = ampl_calloc(task, num_var, &found);
    if (res != ZLR_RES_OK) return res;
    for (int32_t j = 0; j < num_var; ++j) {
        const int64_t number = std::abs(static_cast<int64_t>(value[j]));
        if (number > 0 && number <= num_var) found[number - 1] = 1;
    }
    const char *missing = std::find(found, found + num_var, 0);
    Printf(" *** Error: ");
    Printf("No root specified for cone: %d\n", static_cast<int>(missing - found));
    ampl_free(task, &found);
    return ZLR_RES_ERR_CONE;
}

int32_t ZLR_amplputcones(ZLR_task *task, int32_t num_var, const SufDesc *cone)
{
    if (cone == nullptr || cone->u.i == nullptr || num_var <= 0) return ZLR_RES_OK;
    const int *value = cone->u.i;
    cone_lists lists = {};
    int64_t largest = 0;
    for (int32_t j = 0; j < num_var; ++j) largest = std::max(largest, std::abs(static_cast<int64_t>(value[j])));
    if (largest == 0) return ZLR_RES_OK;
    if (largest > std::max<int64_t>(num_var, listed_numbers)) return refuse_numbers(task, num_var, value);
    lists.num = static_cast<int32_t>(largest);
    const int32_t res = put_cones(task, num_var, value, &lists);
    ampl_free(task, &lists.member);
    ampl_free(task, &lists.start);
    return res;
}
