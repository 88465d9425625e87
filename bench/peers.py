"""A problem solved by kalvoopt at Octave's prompt and by the engines' own Python packages, in turns.

Packages are installed into build/bench/peers. Seconds of kalvoopt are those of a whole call with a record, the packages' those of
set-up and solve.
"""

import dataclasses
import math
import multiprocessing
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PEERS = ROOT / "build" / "bench" / "peers"
PACKAGES = ["clarabel==0.11.1", "piqp==0.7.0", "numpy==2.4.6", "scipy==1.17.1"]
if not PEERS.exists():
    subprocess.run([sys.executable, "-m", "pip", "install", "--quiet", "--root-user-action=ignore", "--target", PEERS, *PACKAGES],
                   check=True)
sys.path[:0] = [str(PEERS), str(ROOT / "tests" / "octave")]

import clarabel
import numpy
import piqp
import scipy.io

import problems
import terminal


@dataclasses.dataclass
class Answer:
    seconds: float
    solved: bool
    objective: float
    status: str
    cpu: float = math.nan
    iterations: int = 0
    tries: int = 0
    worker: float = math.nan
    engine: float = math.nan
    check: float = math.nan


class Prompt:
    """Octave, which takes problems as records."""

    def __init__(self, limit=60):
        self.limit = limit
        self.folder = tempfile.TemporaryDirectory()
        self.octave = None

    def load(self, problem):
        file = pathlib.Path(self.folder.name) / "problem.mat"
        scipy.io.savemat(file, problems.record(problem), do_compression=False)
        self.load_by(f"prob = load ('{file}')")

    def load_by(self, command):
        if self.octave is None:
            self.octave = terminal.Octave(ROOT / "build" / "toolbox", ROOT / "bench")
        self.octave.type(command + ";", 60)

    def solve(self):
        before = self.cpu()
        try:
            words = self.octave.type(f"solve_record (prob, {self.limit})", 2 * self.limit + 60).split()
            code, seconds, iterations, tries, status, objective, *rest = words
            return Answer(float(seconds), status == "OPTIMAL", float(objective), status if code == "0" else f"{status} {code}",
                          self.cpu() - before, int(iterations), int(tries), *map(float, rest))
        except (TimeoutError, OSError, IndexError, ValueError) as fault:
            self.octave.close()
            self.octave = None
            return Answer(math.nan, False, math.nan, f"no answer: {fault}"[:300])

    def cpu(self):
        """Seconds of processors that Octave and its workers have used."""
        ticks = 0
        own = self.octave.process
        for process in [own, *map(int, pathlib.Path(f"/proc/{own}/task/{own}/children").read_text().split())]:
            fields = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()
            ticks += sum(map(int, fields[11:13] + (fields[13:15] if process == own else [])))
        return ticks / 100


def conic_solver(problem, limit=60):
    data = problems.conic(problem)
    settings = clarabel.DefaultSettings()
    settings.verbose, settings.time_limit = False, limit

    def solve():
        began, used = time.perf_counter(), time.process_time()
        answer = clarabel.DefaultSolver(*data, settings).solve()
        return Answer(time.perf_counter() - began, answer.status == clarabel.SolverStatus.Solved,
                      problem.sense * answer.obj_val + problem.fixed, str(answer.status), time.process_time() - used,
                      answer.iterations)

    return solve


def quadratic_solver(problem):
    rows, fixed = problem.a.tocsr(), problem.row_lower == problem.row_upper
    pick = lambda which: rows[which].tocsc() if which.any() else None
    side = lambda values, which: values[which] if which.any() else None
    arguments = (problem.p, problem.c, pick(fixed), side(problem.row_upper, fixed), pick(~fixed), side(problem.row_lower, ~fixed),
                 side(problem.row_upper, ~fixed), problem.lower, problem.upper)

    def solve():
        began, used = time.perf_counter(), time.process_time()
        solver = piqp.SparseSolver()
        solver.settings.eps_rel = 1e-12
        solver.setup(*arguments)
        status = solver.solve()
        return Answer(time.perf_counter() - began, status == piqp.PIQP_SOLVED, solver.result.info.primal_obj + problem.fixed,
                      str(status), time.process_time() - used, solver.result.info.iter)

    return solve


def apart(solve, limit):
    """Solves in a process of its own, which may die or take too long."""
    ours, theirs = multiprocessing.Pipe(duplex=False)
    child = multiprocessing.get_context("fork").Process(target=lambda: theirs.send(solve()))
    child.start()
    theirs.close()
    try:
        return ours.recv() if ours.poll(limit) else Answer(math.nan, False, math.nan, "too slow")
    except EOFError:
        return Answer(math.nan, False, math.nan, "died")
    finally:
        child.kill()
        child.join()


def in_turns(*solvers):
    """The quickest of three runs of each, one after the other; one run from 4 s on."""
    best = [solve() for solve in solvers]
    for _ in range(2):
        for k, solve in enumerate(solvers):
            if best[k].seconds < 4:
                again = solve()
                best[k] = again if again.seconds < best[k].seconds else best[k]
    return best


def mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else math.nan


def summary(title, ratios):
    print(f"{title}: geometric mean {mean(ratios):.2f}, largest {max(ratios, default=math.nan):.2f}, of {len(ratios)} problems")
