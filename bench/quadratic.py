#!/usr/bin/env python3
"""Convex quadratic problems from the prompt, against the engines' own Python packages.

    bench/quadratic.py FOLDER

FOLDER has .mat files with P, q, r, A, l, u: min 1/2 x'Px + q'x + r, l <= Ax <= u, the last rows of A being the identity, 1e20
and numbers near it meaning infinite.
"""

import math
import pathlib
import sys

import peers
import problems


def main():
    print(f"{'file':<12} {'conic s':>9} {'quadratic s':>11} {'ours s':>9} {'ratios':>13}")
    prompt, to_conic, to_best = peers.Prompt(), [], []
    for file in sorted(pathlib.Path(sys.argv[1]).glob("*.mat")):
        problem = problems.read(file)
        prompt.load(problem)
        ours, conic, quadratic = peers.in_turns(prompt.solve, peers.conic_solver(problem), peers.quadratic_solver(problem))
        best = min((each.seconds for each in (conic, quadratic) if each.solved), default=math.nan)
        if ours.solved and conic.solved and conic.seconds >= 0.01:
            to_conic.append(ours.seconds / conic.seconds)
        if ours.solved and best >= 0.005:
            to_best.append(ours.seconds / best)
        print(f"{file.stem:<12} {conic.seconds:9.4f} {quadratic.seconds:11.4f} {ours.seconds:9.4f} "
              f"{ours.seconds / conic.seconds:6.2f} {ours.seconds / best:6.2f}{'' if ours.solved else '  ' + ours.status}", flush=True)
    peers.summary("against the conic engine's package, 10 ms and more", to_conic)
    peers.summary("against the better package, 5 ms and more", to_best)


main()
