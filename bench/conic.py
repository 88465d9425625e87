#!/usr/bin/env python3
"""Published convex problems from the prompt: status and objective by our own check, and seconds against the conic engine's package.

    bench/conic.py FOLDER [NAME ...]      all, or problems and families of these names

FOLDER/INDEX.tsv has family, name, file and optimum of each problem. Objectives are compared relative to the optimum, absolutely below 1; a problem
counts in the mean when both solve it and the package takes 10 ms or more. One run of each takes 60 s at most.
"""

import csv
import math
import pathlib
import sys

import peers
import problems

FAMILIES = ["qcqp", "socp", "dimacs", "exp", "pow", "qp"]


def listed(folder, names):
    """One file of each problem that is one of these or of their families."""
    with open(folder / "INDEX.tsv") as index:
        rows = [row for row in csv.DictReader(index, delimiter="\t") if row["family"] in FAMILIES]
    rows = [row for row in rows if ".QPS" not in row["file"] and (not names or {row["name"], row["family"]} & set(names))]
    return [(row["name"], folder / row["file"], row["optimum"]) for row in rows]


def number(text):
    try:
        return float(text)
    except ValueError:
        return math.nan


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    print(f"{'problem':<20} {'ours':<24} {'error':>8} {'steps':>5} {'seconds':>9} {'cpu':>6}  "
          f"{'package':<20} {'error':>8} {'steps':>5} {'seconds':>9} {'cpu':>6} {'ratio':>6}")
    prompt, ratios, right = peers.Prompt(), {}, 0
    files = listed(folder, sys.argv[2:])
    for name, file, optimum in files:
        if ".lp" in file.suffixes:
            prompt.load_by(f"[~, prob] = kalvoopt ('read({file}) echo(0)'); prob = prob.prob")
            ours, package = prompt.solve(), peers.Answer(math.nan, False, math.nan, "-")
        else:
            problem = problems.read(file)
            prompt.load(problem)
            solve = peers.conic_solver(problem)
            ours, package = peers.in_turns(prompt.solve, lambda: peers.apart(solve, 120))
        scale = max(1, abs(number(optimum)))
        errors = [abs(each.objective - number(optimum)) / scale for each in (ours, package)]
        right += ours.solved and errors[0] <= 1e-6
        ratio = ours.seconds / package.seconds
        if ours.solved and package.solved and package.seconds >= 0.01:
            ratios[name] = ratio
        tries = f" +{ours.tries}" if ours.tries else ""
        print(f"{name:<20} {ours.status + tries:<24} {errors[0]:8.1e} {ours.iterations:5} {ours.seconds:9.4f} {ours.cpu:6.2f}  "
              f"{package.status:<20} {errors[1]:8.1e} {package.iterations:5} {package.seconds:9.4f} {package.cpu:6.2f} {ratio:6.2f}"
              f"{'' if ours.solved and errors[0] <= 1e-6 else f'  <- {optimum}'}", flush=True)
    peers.summary("seconds, 10 ms and more", list(ratios.values()))
    print(f"{right} of {len(files)} optimal, their objective within 1e-6 of the published one")


if __name__ == "__main__":
    main()
