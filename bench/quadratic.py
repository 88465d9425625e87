#!/usr/bin/env python3
"""Convex quadratic problems from the prompt, against the engines' own Python packages.

    bench/quadratic.py FOLDER

FOLDER has .mat files with P, q, r, A, l, u: min 1/2 x'Px + q'x + r, l <= Ax <= u, the last rows of A being the identity, 1e20
and numbers near it meaning infinite. Times are the least of three: ours are whole calls of kalvoopt with a record, the packages'
set-up and solve. The packages are installed into build/bench/peers.
"""

import math
import pathlib
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PEERS = ROOT / "build" / "bench" / "peers"
PACKAGES = ["clarabel==0.11.1", "piqp==0.7.0", "numpy==2.4.6", "scipy==1.17.1"]


def install():
    if not PEERS.exists():
        subprocess.run([sys.executable, "-m", "pip", "install", "--quiet", "--root-user-action=ignore", "--target", PEERS, *PACKAGES],
                       check=True)
    sys.path.insert(0, str(PEERS))


def least(solve):
    best = None
    for _ in range(3):
        seconds, answer = solve()
        best = (seconds, answer) if best is None or seconds < best[0] else best
        if seconds > 4:
            break
    return best


def peers(file):
    import clarabel
    import numpy
    import piqp
    import scipy.io
    import scipy.sparse as sparse

    data = scipy.io.loadmat(file)
    p, a = (sparse.csc_matrix(data[key]).astype(float) for key in "PA")
    p.sort_indices()
    a.sort_indices()
    q, lower, upper = (numpy.array(data[key], float).ravel() for key in "qlu")
    lower, upper = numpy.where(lower < -1e19, -numpy.inf, lower), numpy.where(upper > 1e19, numpy.inf, upper)
    m = a.shape[0] - len(q)
    fixed = lower == upper
    rows = a.tocsr()

    def conic():
        below, above = (~fixed & numpy.isfinite(lower)), (~fixed & numpy.isfinite(upper))
        matrix = sparse.vstack([rows[fixed], rows[above], -rows[below]]).tocsc()
        right = numpy.concatenate([upper[fixed], upper[above], -lower[below]])
        cones = [clarabel.ZeroConeT(int(fixed.sum())), clarabel.NonnegativeConeT(len(right) - int(fixed.sum()))]
        settings = clarabel.DefaultSettings()
        settings.verbose = False
        began = time.perf_counter()
        answer = clarabel.DefaultSolver(sparse.triu(p).tocsc(), q, matrix, right, cones, settings).solve()
        return time.perf_counter() - began, str(answer.status) == "Solved"

    def quadratic():
        equal, other = fixed[:m], ~fixed[:m]
        pick = lambda which: rows[:m][which].tocsc() if which.any() else None
        side = lambda values, which: values[:m][which] if which.any() else None
        began = time.perf_counter()
        solver = piqp.SparseSolver()
        solver.settings.eps_rel = 1e-12
        solver.setup(p, q, pick(equal), side(upper, equal), pick(other), side(lower, other), side(upper, other), lower[m:], upper[m:])
        status = solver.solve()
        return time.perf_counter() - began, "PIQP_SOLVED" in str(status)

    return least(conic), least(quadratic)


def ours(files):
    names = ", ".join(f"'{file}'" for file in files)
    script = f"addpath ('build/toolbox', 'bench'); quadratic_times ({{{names}}})"
    output = subprocess.run(["octave-cli", "--no-history", "--norc", "--quiet", "--eval", script], cwd=ROOT, capture_output=True,
                            text=True, check=True).stdout
    return [line.split() for line in output.splitlines()]


def mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else math.nan


def main():
    install()
    files = sorted(str(file.resolve()) for file in pathlib.Path(sys.argv[1]).glob("*.mat"))
    answers = ours(files)
    print(f"{'file':<12} {'conic s':>9} {'quadratic s':>11} {'ours s':>9} {'ratios':>13}")
    ratios = {"the conic engine's package, 10 ms and more": [], "the better package, 5 ms and more": []}
    to_conic, to_best = ratios.values()
    for file, (seconds, status) in zip(files, answers):
        seconds = float(seconds)
        conic, quadratic = peers(file)
        solved = [each[0] for each in (conic, quadratic) if each[1]]
        if status == "OPTIMAL" and conic[1] and conic[0] >= 0.01:
            to_conic.append(seconds / conic[0])
        if status == "OPTIMAL" and solved and min(solved) >= 0.005:
            to_best.append(seconds / min(solved))
        best = seconds / min(solved) if solved else math.nan
        print(f"{pathlib.Path(file).stem:<12} {conic[0]:9.4f} {quadratic[0]:11.4f} {seconds:9.4f} {seconds / conic[0]:6.2f} {best:6.2f}"
              f"{'' if status == 'OPTIMAL' else '  ' + status}")
    for title, values in ratios.items():
        print(f"against {title}: geometric mean {mean(values):.2f}, largest {max(values, default=math.nan):.2f}, of {len(values)} files")


main()
