#!/usr/bin/env python3
"""Published convex problems, scaled so that they remain equivalent: are they proved, is the objective right?

    bench/scaled.py FOLDER [NAME ...]     as bench/conic.py

A problem takes part when it is solved as published within two seconds; the objective then is what is compared with. The command
that a loss prints solves its record again; the records stay in build/bench/scaled.
"""

import pathlib
import shutil
import sys

import conic
import peers
import problems

VARIANTS = {"rows and columns": {"spread": 4}, "costs 1e8": {"cost": 1e8}, "costs 1e-8": {"cost": 1e-8},
            "bounds 1e8": {"size": 1e8}, "bounds 1e-8": {"size": 1e-8}, "all": {"spread": 4, "cost": 1e8, "size": 1e-8}}
LOSSES = peers.ROOT / "build" / "bench" / "scaled"


def main():
    LOSSES.mkdir(parents=True, exist_ok=True)
    prompt, counts = peers.Prompt(10), {name: [0, 0, 0] for name in VARIANTS}
    for name, file, _ in conic.listed(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2:]):
        if ".lp" in file.suffixes:
            continue
        problem = problems.read(file)
        prompt.load(problem)
        stated = prompt.solve()
        if not stated.solved or stated.seconds > 2:
            print(f"{name:<20} left out: {stated.status}, {stated.seconds:.1f} s", flush=True)
            continue
        for seed, (variant, how) in enumerate(VARIANTS.items()):
            prompt.load(problems.scaled(problem, seed, **how))
            answer = prompt.solve()
            optimum = stated.objective * how.get("cost", 1) * how.get("size", 1)
            error = abs(answer.objective - optimum) / max(1, abs(optimum))
            wrong = answer.solved and error > 1e-5 or "CERTIFICATE" in answer.status
            counts[variant][0 if answer.solved and not wrong else 2 if wrong else 1] += 1
            if wrong or not answer.solved:
                kept = LOSSES / f"{name}-{seed}.mat"
                if pathlib.Path(prompt.folder.name, "problem.mat").exists():
                    shutil.copy(pathlib.Path(prompt.folder.name, "problem.mat"), kept)
                print(f"{name:<20} {variant:<17} {'WRONG' if wrong else 'lost'} {answer.status} +{answer.tries}, {answer.seconds:.2f} s, "
                      f"objective {answer.objective:.9g} for {optimum:.9g}\n    prob = load ('{kept.relative_to(peers.ROOT)}'); "
                      f"kalvoopt ('{'minimize' if problem.sense == 1 else 'maximize'}', prob);", flush=True)
    for variant, (proved, lost, wrong) in counts.items():
        print(f"{variant:<17} {proved:3} proved, {lost:3} lost, {wrong:3} wrong")


main()
