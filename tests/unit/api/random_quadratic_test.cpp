/* random_quadratic_test.cpp - convex quadratic and conic problems whose optimum is known, for they are built backwards from
 * a point and its multipliers: degenerate ones, rank-deficient ones, points at the tip of a cone. Some are then made
 * infeasible or unbounded. */
#include "api_support.h"
#include "random_problem.h"

#include <numeric>
#include <random>

typedef std::vector<std::vector<double>> dense;

struct built_cone {
    int32_t type;
    std::vector<int32_t> member;
};

enum outcome { HAS_OPTIMUM, IS_INFEASIBLE, IS_UNBOUNDED };

/* As for a minimisation, until it is turned round. */
struct built_problem {
    api_model m;
    dense q0; /* empty: none */
    std::vector<std::pair<int32_t, dense>> q_rows;
    std::vector<built_cone> cones;
    std::vector<double> x, y, z; /* z: what the bounds and cones give to the gradient */
    double optimum = 0.0;
    outcome wanted = HAS_OPTIMUM;
};

class builder
{
public:
    explicit builder(uint64_t seed) : random_(seed) {}

    built_problem build()
    {
        built_problem p;
        const int32_t kind = number(0, 2), n = number(1, 7), rows = number(0, 6);
        p.m.sense = number(0, 1) == 0 ? ZLR_SENSE_MIN : ZLR_SENSE_MAX;
        p.m.cfix = number(-5, 5);
        p.x.resize(static_cast<size_t>(n));
        p.z.assign(p.x.size(), 0.0);
        for (double &v : p.x) v = number(-3, 3);
        p.m.lower.assign(p.x.size(), -inf);
        p.m.upper.assign(p.x.size(), inf);
        const size_t in_cones = kind == 1 ? add_cones(&p) : 0;
        for (size_t j = in_cones; j < p.x.size(); j++) add_bounds(&p, j);
        if (kind != 1 || number(0, 2) == 0) p.q0 = semidefinite(p.x.size(), number(0, n));
        for (int32_t i = 0; i < rows; i++) add_row(&p, kind == 2 && number(0, 1) == 0);
        set_costs(&p);
        spoil(&p);
        if (p.m.sense == ZLR_SENSE_MAX) turn_round(&p);
        return p;
    }

private:
    std::mt19937_64 random_;

    int32_t number(int32_t from, int32_t to) { return std::uniform_int_distribution<int32_t>(from, to)(random_); }

    dense semidefinite(size_t n, int32_t rank)
    {
        dense q(n, std::vector<double>(n, 0.0));
        for (int32_t k = 0; k < rank; k++) {
            std::vector<double> f(n);
            for (double &v : f) v = number(0, 2) == 0 ? 0.0 : number(-2, 2);
            for (size_t i = 0; i < n; i++)
                for (size_t j = 0; j < n; j++) q[i][j] += f[i] * f[j];
        }
        return q;
    }

    /* Cones over the first columns: at the tip, on the boundary, inside. Returns how many columns they take. */
    size_t add_cones(built_problem *p)
    {
        size_t at = 0;
        while (p->x.size() - at >= 3 && number(0, 3) != 0) {
            const bool rotated = number(0, 1) == 0;
            const double size = number(1, 3);
            std::vector<double> x, dual;
            switch (number(0, 2)) {
            case 0:
                x = {0.0, 0.0, 0.0};
                dual = rotated ? std::vector<double>{2.0, 1.0, number(0, 1) == 0 ? 2.0 : -1.0}
                               : std::vector<double>{5.0, number(0, 1) == 0 ? 3.0 : 1.0, -4.0};
                break;
            case 1:
                x = rotated ? std::vector<double>{2.0, 1.0, 2.0} : std::vector<double>{5.0, -3.0, 4.0};
                dual = rotated ? std::vector<double>{1.0, 2.0, -2.0} : std::vector<double>{5.0, 3.0, -4.0};
                break;
            default:
                x = {3.0, 2.0, -1.0};
                dual = {0.0, 0.0, 0.0};
                break;
            }
            built_cone cone = {rotated ? ZLR_CT_RQUAD : ZLR_CT_QUAD, {}};
            for (size_t k = 0; k < 3; k++, at++) {
                cone.member.push_back(static_cast<int32_t>(at));
                p->x[at] = size * x[k];
                p->z[at] = dual[k];
            }
            p->cones.push_back(cone);
        }
        return at;
    }

    void add_bounds(built_problem *p, size_t j)
    {
        const double x = p->x[j], away = number(1, 4);
        switch (number(0, 5)) {
        case 0: p->m.lower[j] = x, p->z[j] = number(0, 3); break; /* 0: degenerate */
        case 1: p->m.upper[j] = x, p->z[j] = -number(0, 3); break;
        case 2: p->m.lower[j] = p->m.upper[j] = x, p->z[j] = number(-3, 3); break;
        case 3: p->m.lower[j] = x - away, p->m.upper[j] = x + away; break;
        case 4: p->m.lower[j] = x, p->m.upper[j] = x + away, p->z[j] = number(0, 3); break;
        default: break;
        }
    }

    void add_row(built_problem *p, bool quadratic)
    {
        std::vector<double> a(p->x.size());
        for (double &v : a) v = number(0, 2) == 0 ? 0.0 : number(-3, 3);
        double value = std::inner_product(a.begin(), a.end(), p->x.begin(), 0.0), y = 0.0;
        api_row row = {-inf, inf, a};
        const double away = number(1, 5);
        if (quadratic) {
            const dense q = semidefinite(p->x.size(), number(1, 2));
            value += half(q, p->x);
            const bool is_active = number(0, 2) != 0;
            row.upper = value + (is_active ? 0.0 : away);
            y = is_active ? -number(0, 3) : 0.0;
            p->q_rows.emplace_back(static_cast<int32_t>(p->m.rows.size()), q);
        } else {
            switch (number(0, 4)) {
            case 0: row.lower = row.upper = value, y = number(-3, 3); break;
            case 1: row.lower = value, y = number(0, 3); break;
            case 2: row.upper = value, y = -number(0, 3); break;
            case 3: row.lower = value - away, row.upper = value + away; break;
            default: row.lower = value, row.upper = value + away, y = number(0, 3); break;
            }
        }
        p->m.rows.push_back(row);
        p->y.push_back(y);
    }

    static double half(const dense &q, const std::vector<double> &x)
    {
        double sum = 0.0;
        for (size_t i = 0; i < q.size(); i++) sum += 0.5 * x[i] * product(q, x, i);
        return sum;
    }

    static double product(const dense &q, const std::vector<double> &x, size_t i)
    {
        return q.empty() ? 0.0 : std::inner_product(x.begin(), x.end(), q[i].begin(), 0.0);
    }

    /* c = A'y + z - Q0 x + the rows' quadratic parts. */
    static void set_costs(built_problem *p)
    {
        p->m.c = p->z;
        for (size_t j = 0; j < p->x.size(); j++) {
            p->m.c[j] -= product(p->q0, p->x, j);
            for (size_t i = 0; i < p->y.size(); i++) p->m.c[j] += p->y[i] * p->m.rows[i].a[j];
            for (const auto &[i, q] : p->q_rows) p->m.c[j] += p->y[static_cast<size_t>(i)] * product(q, p->x, j);
        }
        p->optimum = p->m.cfix + half(p->q0, p->x) + std::inner_product(p->x.begin(), p->x.end(), p->m.c.begin(), 0.0);
    }

    void spoil(built_problem *p)
    {
        const int32_t way = number(0, 15);
        if (way == 0) { /* two rows that contradict each other */
            std::vector<double> a(p->x.size(), 0.0);
            a[static_cast<size_t>(number(0, static_cast<int32_t>(a.size()) - 1))] = number(1, 3);
            p->m.rows.push_back({4.0, inf, a});
            for (double &v : a) v *= 2.0;
            p->m.rows.push_back({-inf, 7.0, a});
            p->wanted = IS_INFEASIBLE;
        } else if (way == 1) { /* a column that pays without end */
            p->m.c.push_back(-1.0);
            p->m.lower.push_back(0.0);
            p->m.upper.push_back(inf);
            for (api_row &row : p->m.rows) row.a.push_back(0.0);
            p->wanted = IS_UNBOUNDED;
        }
    }

    static void turn_round(built_problem *p)
    {
        for (double &v : p->m.c) v = -v;
        for (auto &row : p->q0)
            for (double &v : row) v = -v;
        p->m.cfix = -p->m.cfix;
        p->optimum = -p->optimum;
    }
};

struct triples {
    std::vector<int32_t> i, j;
    std::vector<double> value;
    int32_t size() const { return static_cast<int32_t>(i.size()); }
};

static triples lower_triangle(const dense &q)
{
    triples t;
    for (size_t i = 0; i < q.size(); i++) {
        for (size_t j = 0; j <= i; j++) {
            if (q[i][j] == 0.0) continue;
            t.i.push_back(static_cast<int32_t>(i));
            t.j.push_back(static_cast<int32_t>(j));
            t.value.push_back(q[i][j]);
        }
    }
    return t;
}

static void fill_built(ZLR_task *task, const built_problem &p)
{
    fill(task, p.m);
    const triples q0 = lower_triangle(p.q0);
    ASSERT_EQ(ZLR_putqobj(task, q0.size(), q0.i.data(), q0.j.data(), q0.value.data()), 0);
    for (const auto &[i, q] : p.q_rows) {
        const triples t = lower_triangle(q);
        ASSERT_EQ(ZLR_putqconk(task, i, t.size(), t.i.data(), t.j.data(), t.value.data()), 0);
    }
    for (const built_cone &cone : p.cones)
        ASSERT_EQ(ZLR_appendcone(task, cone.type, 0.0, static_cast<int32_t>(cone.member.size()), cone.member.data()),
                  0);
}

/* What became of problems, by what was wanted. */
struct tally {
    int32_t num[3] = {0, 0, 0}, num_near = 0;
};

static void solve_seed(ZLR_env *env, uint64_t seed, tally *t)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    const built_problem p = builder(seed).build();
    ZLR_task *task = nullptr;
    std::string log;
    int32_t type = -1, solsta = -1;
    ASSERT_EQ(ZLR_makeemptytask(env, &task), 0);
    ASSERT_EQ(ZLR_linkfunctotaskstream(task, ZLR_STREAM_LOG, &log,
                                       [](void *text, const char *s) { *static_cast<std::string *>(text) += s; }),
              0);
    fill_built(task, p);
    ASSERT_EQ(ZLR_getprobtype(task, &type), 0);
    EXPECT_EQ(ZLR_optimize(task), 0) << log;
    const int32_t kind = type == ZLR_PROBTYPE_LO ? ZLR_SOL_BAS : ZLR_SOL_ITR;
    EXPECT_EQ(ZLR_getsolsta(task, kind, &solsta), 0) << log;
    t->num[p.wanted]++;
    if (p.wanted == HAS_OPTIMUM) {
        double objective = 0.0;
        EXPECT_TRUE(solsta == ZLR_SOLSTA_OPTIMAL || solsta == ZLR_SOLSTA_NEAR_OPTIMAL) << solsta << "\n" << log;
        t->num_near += solsta == ZLR_SOLSTA_NEAR_OPTIMAL ? 1 : 0;
        EXPECT_EQ(ZLR_getprimalobj(task, kind, &objective), 0);
        EXPECT_NEAR(objective, p.optimum, 1e-5 * (1.0 + std::fabs(p.optimum))) << log;
    } else {
        EXPECT_EQ(solsta, p.wanted == IS_INFEASIBLE ? ZLR_SOLSTA_PRIM_INFEAS_CER : ZLR_SOLSTA_DUAL_INFEAS_CER) << log;
    }
    EXPECT_EQ(ZLR_deletetask(&task), 0);
}

TEST(random_quadratic, problems_built_backwards_come_out)
{
    tally t;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    const int64_t first = random_env("ZELOR_RANDOM_SEED", 1), count = random_env("ZELOR_RANDOM_COUNT", 1000);
    for (int64_t seed = first; seed < first + count && !testing::Test::HasFailure(); seed++)
        solve_seed(env, static_cast<uint64_t>(seed), &t);
    EXPECT_GE(2 * t.num[HAS_OPTIMUM], count);
    EXPECT_LE(t.num_near, count / 100); /* without a point strictly inside, multipliers can be as large as they like */
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}

/* Degenerate ones, where the proof that the engine shows does not hold and another is to be found. */
TEST(random_quadratic, proofs_are_found_where_the_engine_has_none_that_holds)
{
    tally t;
    ZLR_env *env = nullptr;
    ASSERT_EQ(ZLR_makeenv(&env, nullptr), 0);
    for (const uint64_t seed : {5543, 13210, 19659, 55182}) solve_seed(env, seed, &t);
    EXPECT_EQ(t.num[IS_INFEASIBLE], 1);
    EXPECT_EQ(t.num[IS_UNBOUNDED], 3);
    EXPECT_EQ(ZLR_deleteenv(&env), 0);
}
