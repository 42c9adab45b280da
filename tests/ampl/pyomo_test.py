#!/usr/bin/env python3
"""Pyomo drives zelor and zelor-ampl as users do. Answers are checked against the models' own data.

Status 77: Pyomo is not there (scripts/install-deps test gets it).

  ZELOR_BIN     the folder of zelor and zelor-ampl
  ZELOR_PYOMO   the folder that Pyomo was unpacked into; unset: wherever Python finds it
"""
import logging
import math
import os
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BIN = os.environ.get("ZELOR_BIN", os.path.join(ROOT, "build", "release", "bin"))
sys.path.insert(0, os.environ.get("ZELOR_PYOMO", os.path.join(ROOT, "build", "deps", "pyomo-6.10.1")))
os.environ["PATH"] = BIN + os.pathsep + os.environ["PATH"]
os.environ.pop("zelor_options", None)

try:
    import pyomo.environ as pe
    from pyomo.common.tempfiles import TempfileManager
    from pyomo.opt import SolverStatus, TerminationCondition
except ImportError as missing:
    print(f"{missing}: scripts/install-deps test gets it")
    sys.exit(77)

logging.getLogger("pyomo").setLevel(logging.ERROR)  # a warning a refused model
PROGRAMS = ("asl:zelor", "asl:zelor-ampl")


def solve(model, program="asl:zelor-ampl", load=True, **options):
    """Solves and gives Pyomo's result; options are keywords of zelor."""
    solver = pe.SolverFactory(program)
    for name, value in options.items():
        solver.options[name] = value
    results = solver.solve(model, load_solutions=load)
    return results.solver


def small_lp(sense, step=(0.0, 0.0), cost=(3.0, 4.0)):
    """Both rows count at the optimum; their sides move by `step`."""
    m = pe.ConcreteModel()
    m.x = pe.Var(bounds=(0, None))
    m.y = pe.Var(bounds=(0, None))
    if sense == pe.maximize:
        m.a = pe.Constraint(expr=2 * m.x + m.y <= 40 + step[0])
        m.b = pe.Constraint(expr=m.x + 3 * m.y <= 30 + step[1])
    else:
        m.a = pe.Constraint(expr=2 * m.x + m.y >= 40 + step[0])
        m.b = pe.Constraint(expr=m.x + 3 * m.y >= 30 + step[1])
    m.o = pe.Objective(expr=cost[0] * m.x + cost[1] * m.y, sense=sense)
    m.dual = pe.Suffix(direction=pe.Suffix.IMPORT)
    m.rc = pe.Suffix(direction=pe.Suffix.IMPORT)
    return m


def endless_mip():
    """Equal shares of many numbers: points at once, no proof within a lifetime."""
    m = pe.ConcreteModel()
    m.item = pe.Var(range(40), domain=pe.Binary)
    m.over = pe.Var(range(4), bounds=(0, None))
    m.under = pe.Var(range(4), bounds=(0, None))
    seed, weights = 1, []
    for _ in range(160):
        seed = (seed * 1664525 + 1013904223) % 2**32
        weights.append(seed >> 25)
    def share(_, i):
        row = weights[40 * i:40 * i + 40]
        return sum(w * m.item[k] for k, w in enumerate(row)) + m.over[i] - m.under[i] == sum(row) // 2
    m.share = pe.Constraint(range(4), rule=share)
    m.o = pe.Objective(expr=sum(m.over.values()) + sum(m.under.values()))
    return m


class Answers(unittest.TestCase):
    def assert_solved(self, answer, condition=TerminationCondition.optimal):
        self.assertEqual(answer.termination_condition, condition, str(answer))
        self.assertEqual(answer.status, SolverStatus.ok, str(answer))

    def test_linear(self):
        for program in PROGRAMS:
            with self.subTest(program):
                m = small_lp(pe.maximize)
                self.assert_solved(solve(m, program))
                self.assertAlmostEqual(pe.value(m.o), 3 * 18 + 4 * 4, 7)

    def test_integer(self):
        values, sizes, room = (10, 13, 18, 31, 7, 15), (2, 3, 4, 5, 1, 4), 10
        best = max(sum(v for k, v in enumerate(values) if chosen >> k & 1) for chosen in range(64)
                   if sum(s for k, s in enumerate(sizes) if chosen >> k & 1) <= room)
        for program in PROGRAMS:
            with self.subTest(program):
                m = pe.ConcreteModel()
                m.x = pe.Var(range(6), domain=pe.Binary)
                m.c = pe.Constraint(expr=sum(s * m.x[k] for k, s in enumerate(sizes)) <= room)
                m.o = pe.Objective(expr=sum(v * m.x[k] for k, v in enumerate(values)), sense=pe.maximize)
                self.assert_solved(solve(m, program))
                self.assertAlmostEqual(pe.value(m.o), best, 7)

    def test_quadratic(self):
        for program in PROGRAMS:
            with self.subTest(program):
                m = pe.ConcreteModel()
                m.x = pe.Var()
                m.y = pe.Var(bounds=(None, 1))
                m.c = pe.Constraint(expr=m.x + m.y == 3)
                m.o = pe.Objective(expr=m.x**2 + 2 * m.y**2 + m.x * m.y - m.y + 1)
                self.assert_solved(solve(m, program))
                # With x = 3 - y the objective is 10 - 4 y + 2 y^2, smallest at y = 1.
                self.assertAlmostEqual(m.y.value, 1, 5)
                self.assertAlmostEqual(pe.value(m.o), 8, 5)

    def test_quadratic_constraint(self):
        for program in PROGRAMS:
            with self.subTest(program):
                m = pe.ConcreteModel()
                m.x = pe.Var()
                m.y = pe.Var()
                m.c = pe.Constraint(expr=m.x**2 + m.y**2 <= 2)
                m.o = pe.Objective(expr=m.x + m.y, sense=pe.maximize)
                m.dual = pe.Suffix(direction=pe.Suffix.IMPORT)
                self.assert_solved(solve(m, program))
                self.assertAlmostEqual(pe.value(m.o), 2, 6)
                self.assertAlmostEqual(m.dual[m.c], 0.5, 5)

    def test_cone(self):
        for program in PROGRAMS:
            with self.subTest(program):
                m = pe.ConcreteModel()
                m.t = pe.Var(bounds=(0, None))
                m.x = pe.Var()
                m.y = pe.Var()
                m.c = pe.Constraint(expr=m.x + m.y == 2)
                m.o = pe.Objective(expr=m.t)
                m.cone = pe.Suffix(direction=pe.Suffix.EXPORT, datatype=pe.Suffix.INT)
                m.cone[m.t] = -1
                m.cone[m.x] = 1
                m.cone[m.y] = 1
                self.assert_solved(solve(m, program))
                self.assertAlmostEqual(pe.value(m.o), math.sqrt(2), 6)

    def test_infeasible_and_unbounded(self):
        for program in PROGRAMS:
            with self.subTest(program):
                m = small_lp(pe.minimize)
                m.clash = pe.Constraint(expr=m.x + m.y <= 1)
                answer = solve(m, program, load=False)
                self.assertEqual(answer.termination_condition, TerminationCondition.infeasible)
                m = small_lp(pe.minimize, cost=(-1.0, -1.0))
                answer = solve(m, program, load=False)
                self.assertEqual(answer.termination_condition, TerminationCondition.unbounded)

    def test_refused(self):
        """Not convex: zelor-ampl says why. Two-sided: it solves that locally, and without AMPL_EXTENDED there is no file, which Pyomo raises."""
        m = pe.ConcreteModel()
        m.x = pe.Var(bounds=(0, 2))
        m.y = pe.Var(bounds=(0, 2))
        m.c = pe.Constraint(expr=m.x * m.y <= 1)
        m.o = pe.Objective(expr=m.x + m.y, sense=pe.maximize)
        answer = solve(m, load=False)
        self.assertIn("is not convex", answer.message)
        self.assertEqual(answer.status, SolverStatus.error)
        m.c.deactivate()
        m.e = pe.Constraint(expr=m.x**2 + m.y**2 == 1)
        answer = solve(m, load=False)
        self.assertIn("LOCALLY_OPTIMAL", answer.message)
        with self.assertRaises(Exception):
            solve(m, "asl:zelor", load=False)

    def test_bad_option(self):
        answer = solve(small_lp(pe.minimize), load=False, no_such_option=1)
        self.assertIn("no_such_option", answer.message)
        self.assertEqual(answer.status, SolverStatus.error)


class Suffixes(unittest.TestCase):
    def test_duals_are_derivatives(self):
        step = 0.01
        for program in PROGRAMS:
            for sense in (pe.minimize, pe.maximize):
                with self.subTest(program=program, sense=sense):
                    base = small_lp(sense)
                    solve(base, program)
                    for row, moved in ((base.a, (step, 0)), (base.b, (0, step))):
                        other = small_lp(sense, moved)
                        solve(other, program)
                        change = (pe.value(other.o) - pe.value(base.o)) / step
                        self.assertAlmostEqual(base.dual[row], change, 6)
                        self.assertGreater(abs(change), 0.1)

    def test_reduced_costs(self):
        """A column at its bound: what one more of the bound changes. Only zelor-ampl returns them."""
        step = 0.01
        for sense in (pe.minimize, pe.maximize):
            with self.subTest(sense=sense):
                m = small_lp(sense, cost=(3.0, 9.0) if sense == pe.minimize else (3.0, 4.0))
                column, set_bound, bound = (m.y, m.y.setlb, 5) if sense == pe.minimize else (m.x, m.x.setub, 17.5)
                set_bound(bound)
                solve(m)
                self.assertAlmostEqual(column.value, bound, 7)
                rc, objective = m.rc[column], pe.value(m.o)
                self.assertGreater(rc, 0.1)
                set_bound(bound + step)
                solve(m)
                self.assertAlmostEqual(rc, (pe.value(m.o) - objective) / step, 6)
                solve(m, "asl:zelor")
                self.assertEqual(len(m.rc), 0)

    def test_statuses_both_ways(self):
        m = small_lp(pe.maximize)
        m.sstatus = pe.Suffix(direction=pe.Suffix.IMPORT_EXPORT, datatype=pe.Suffix.INT)
        iterations = []
        with tempfile.TemporaryDirectory() as folder:
            result = os.path.join(folder, "Result.json")
            for _ in range(2):
                solve(m, result_file=result, optimizer="DUAL_SIMPLEX")
                with open(result, encoding="utf-8") as text:
                    iterations.append([line for line in text if '"iterations"' in line][0])
                self.assertEqual(sum(1 for status in m.sstatus.values() if status == 1), 2)
        self.assertNotIn(": 0,", iterations[0])
        self.assertIn(": 0,", iterations[1])

    def test_sensitivity(self):
        m = small_lp(pe.maximize)
        for name in ("up", "down", "current"):
            setattr(m, name, pe.Suffix(direction=pe.Suffix.IMPORT))
        for program in PROGRAMS:
            with self.subTest(program):
                solve(m, program, sensitivity=1)
                self.assertAlmostEqual(m.current[m.a], 40)
                self.assertAlmostEqual(m.current[m.x], 3)
                # The basis (x, y) lasts while both stay at 0 or more, and while the costs stay between the rows' slopes.
                self.assertAlmostEqual(m.down[m.a], 10, 6)
                self.assertAlmostEqual(m.up[m.a], 60, 6)
                self.assertAlmostEqual(m.down[m.x], 4 / 3, 6)
                self.assertAlmostEqual(m.up[m.x], 8, 6)


def hs71(product=25.0, squares=40.0, sense=pe.minimize):
    """Hock and Schittkowski's problem 71 as published, start included; as a maximisation its negative."""
    m = pe.ConcreteModel()
    start = {1: 1.0, 2: 5.0, 3: 5.0, 4: 1.0}
    m.x = pe.Var(range(1, 5), bounds=(1, 5), initialize=start)
    value = m.x[1] * m.x[4] * (m.x[1] + m.x[2] + m.x[3]) + m.x[3]
    m.o = pe.Objective(expr=value if sense == pe.minimize else -value, sense=sense)
    m.product = pe.Constraint(expr=m.x[1] * m.x[2] * m.x[3] * m.x[4] >= product)
    m.squares = pe.Constraint(expr=sum(m.x[k] ** 2 for k in m.x) == squares)
    m.dual = pe.Suffix(direction=pe.Suffix.IMPORT)
    m.rc = pe.Suffix(direction=pe.Suffix.IMPORT)
    return m


class Nonlinear(unittest.TestCase):
    def solved(self, m, **options):
        answer = solve(m, **options)
        self.assertEqual(answer.termination_condition, TerminationCondition.optimal, str(answer))
        self.assertIn("LOCALLY_OPTIMAL", answer.message)
        return pe.value(m.o)

    def test_as_published_with_duals(self):
        step = 1e-3
        for sense, sign in ((pe.minimize, 1.0), (pe.maximize, -1.0)):
            with self.subTest(sense):
                m = hs71(sense=sense)
                self.assertAlmostEqual(self.solved(m), sign * 17.0140173, 6)
                slope = {}
                for row in ("product", "squares"):
                    sides = dict(product=25.0, squares=40.0)
                    ends = []
                    for change in (step, -step):
                        ends.append(self.solved(hs71(**{**sides, row: sides[row] + change}, sense=sense)))
                    slope[row] = (ends[0] - ends[1]) / (2 * step)
                self.assertAlmostEqual(m.dual[m.product], slope["product"], 4)
                self.assertAlmostEqual(m.dual[m.squares], slope["squares"], 4)
                self.assertAlmostEqual(m.rc[m.x[1]], sign * 1.0878712, 5)

    def test_starts_are_kept(self):
        for start, end in ((0.9, 1.0), (-0.9, -1.0)):
            m = pe.ConcreteModel()
            m.x = pe.Var(initialize=start)
            m.o = pe.Objective(expr=(m.x**2 - 1) ** 2)
            self.solved(m)
            self.assertAlmostEqual(pe.value(m.x), end, 4)

    def test_not_solved(self):
        m = pe.ConcreteModel()
        m.x = pe.Var(initialize=1.0)
        m.o = pe.Objective(expr=-pe.exp(m.x))
        answer = solve(m, load=False)
        self.assertEqual(answer.termination_condition, TerminationCondition.unbounded, str(answer))
        self.assertIn("return code - 10009", answer.message)

        m = hs71(squares=-1.0)
        answer = solve(m, load=False)
        self.assertEqual(answer.termination_condition, TerminationCondition.infeasible, str(answer))
        self.assertIn("return code - 10008", answer.message)

        m = pe.ConcreteModel()
        m.far = pe.Var(bounds=(-5, -1), initialize=-2.0)
        m.o = pe.Objective(expr=m.far)
        m.reach = pe.Constraint(expr=pe.log(m.far) >= 0)
        answer = solve(m, load=False)
        self.assertEqual(answer.status, SolverStatus.error, str(answer))
        self.assertIn("return code - 1433", answer.message)
        self.assertIn("has no value at", answer.message)

        m = hs71()
        m.x[1].domain = pe.Integers
        answer = solve(m, load=False)
        self.assertEqual(answer.status, SolverStatus.error, str(answer))
        self.assertIn("integer columns together with", answer.message)

    def test_an_interrupt_leaves_the_best_point(self):
        """A chain that takes far longer than the test."""
        m = pe.ConcreteModel()
        n = 20000
        m.x = pe.Var(range(n), initialize=-1.2)
        m.o = pe.Objective(expr=sum(100 * (m.x[k + 1] - m.x[k] ** 2) ** 2 + (1 - m.x[k]) ** 2 for k in range(n - 1)))
        start = pe.value(m.o)
        with tempfile.TemporaryDirectory() as folder:
            stub = os.path.join(folder, "m.nl")
            m.write(stub, format="nl")
            process = subprocess.Popen([os.path.join(BIN, "zelor-ampl"), stub, "-AMPL", "nlp_hessian=limited_memory"],
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            time.sleep(2.0)
            process.send_signal(signal.SIGINT)
            asked = time.monotonic()
            process.communicate(timeout=60)
            self.assertLess(time.monotonic() - asked, 2.0)
            self.assertEqual(process.returncode, 0)
            with open(os.path.join(folder, "m.sol")) as file:
                lines = file.read().split("\n")
        value = [line for line in lines if line.startswith("Primal objective")]
        self.assertIn("return code - 10000", "\n".join(lines[:10]))
        self.assertLess(float(value[0].split(":")[1]), start)


class Stops(unittest.TestCase):
    def check_point(self, m):
        for row in m.share.values():
            self.assertAlmostEqual(pe.value(row.body), pe.value(row.upper), 5)
        for item in m.item.values():
            self.assertAlmostEqual(item.value, round(item.value), 6)

    def test_time_limit(self):
        m = endless_mip()
        for program in PROGRAMS:
            with self.subTest(program):
                start = time.perf_counter()
                answer = solve(m, program, time_limit=1)
                self.assertLess(time.perf_counter() - start, 5)
                self.assertNotEqual(answer.status, SolverStatus.error)
                self.check_point(m)

    def test_time_limit_without_a_point(self):
        answer = solve(endless_mip(), load=False, time_limit=0)
        self.assertEqual(answer.termination_condition, TerminationCondition.maxIterations)  # what Pyomo makes of 400
        self.assertIn("10001", answer.message)

    def test_interrupt(self):
        """The user's CTRL-C reaches the program alone; Pyomo then reads what it leaves."""
        m = endless_mip()
        answer = []
        worker = threading.Thread(target=lambda: answer.append(solve(m, time_limit=60)), daemon=True)
        worker.start()
        time.sleep(3)
        children = subprocess.run(["pgrep", "-P", str(os.getpid()), "zelor"], capture_output=True, text=True, check=False)
        for pid in children.stdout.split():
            os.kill(int(pid), signal.SIGINT)
        worker.join(timeout=20)
        self.assertEqual(len(answer), 1, "the run did not end")
        self.assertIn("10000", answer[0].message)
        self.check_point(m)

    def test_version_answers_at_once(self):
        for program in ("zelor", "zelor-ampl"):
            with self.subTest(program):
                start = time.perf_counter()
                done = subprocess.run([os.path.join(BIN, program), "-v"], capture_output=True, text=True, timeout=5,
                                      check=False)
                self.assertLess(time.perf_counter() - start, 1)
                self.assertRegex(done.stdout, r"\d+\.\d+")
                self.assertEqual(done.returncode, 0)
                self.assertEqual(pe.SolverFactory("asl:" + program).version()[:2], (8, 1))


class Size(unittest.TestCase):
    def test_many_columns(self):
        """100,000 columns, in pairs that fill a row each."""
        num = 50_000
        m = pe.ConcreteModel()
        m.x = pe.Var(range(num), bounds=(0, 1))
        m.y = pe.Var(range(num), bounds=(0, 1))
        m.c = pe.Constraint(range(num), rule=lambda m, k: m.x[k] + m.y[k] <= 1.5)
        m.o = pe.Objective(expr=sum(m.x[k] + 2 * m.y[k] for k in range(num)), sense=pe.maximize)
        answer = solve(m)
        self.assertEqual(answer.termination_condition, TerminationCondition.optimal)
        self.assertAlmostEqual(pe.value(m.o), 2.5 * num, 3)

    def test_five_at_once(self):
        """Five processes, as Pyomo itself does not run in threads."""
        code = ("import sys; sys.argv = ['']; sys.path.insert(0, %r); import pyomo_test as t; "
                "m = t.small_lp(t.pe.maximize, (%d, 0)); t.solve(m); print(t.pe.value(m.o))")
        folder = os.path.dirname(os.path.abspath(__file__))
        runs = [subprocess.Popen([sys.executable, "-c", code % (folder, k)], stdout=subprocess.PIPE, text=True)
                for k in range(5)]
        for k, run in enumerate(runs):
            output, _ = run.communicate(timeout=120)
            self.assertEqual(run.returncode, 0)
            self.assertAlmostEqual(float(output), 70 + k, 6)  # the first row's dual is 1


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as scratch:
        TempfileManager.tempdir = scratch
        unittest.main(verbosity=2)
