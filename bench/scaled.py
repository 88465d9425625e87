#!/usr/bin/env python3
"""Published convex problems, scaled so that they remain equivalent: are they proved, is the objective right?

    bench/scaled.py FOLDER [NAME ...]     as bench/conic.py

A problem takes part when it is solved as published within two seconds; the objective then is what is compared with. Loose is
an optimum by the tolerances, which scaling has made coarse, whose objective is another by more than 1e-5. The command that a loss
prints solves its record again; the records stay in build/bench/scaled.
"""

import collections
import pathlib
import shutil
import sys

import conic
import peers
import problems

VARIANTS = {"rows and columns": {"spread": 4}, "costs 1e8": {"cost": 1e8}, "costs 1e-8": {"cost": 1e-8},
            "bounds 1e8": {"size": 1e8}, "bounds 1e-8": {"size": 1e-8}, "all": {"spread": 4, "cost": 1e8, "size": 1e-8}}
VERDICTS = ["proved", "loose", "lost", "WRONG"]
LOSSES = peers.ROOT / "build" / "bench" / "scaled"


def main():
    LOSSES.mkdir(parents=True, exist_ok=True)
    prompt, counts = peers.Prompt(10), {name: collections.Counter() for name in VARIANTS}
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
            verdict = "WRONG" if "CERTIFICATE" in answer.status else "lost" if not answer.solved else "loose" if error > 1e-5 else "proved"
            counts[variant][verdict] += 1
            if verdict != "proved":
                kept = LOSSES / f"{name}-{seed}.mat"
                if pathlib.Path(prompt.folder.name, "problem.mat").exists():
                    shutil.copy(pathlib.Path(prompt.folder.name, "problem.mat"), kept)
                print(f"{name:<20} {variant:<17} {verdict} {answer.status} +{answer.tries}, {answer.seconds:.2f} s, "
                      f"objective {answer.objective:.9g} for {optimum:.9g}\n    prob = load ('{kept.relative_to(peers.ROOT)}'); "
                      f"kalvoopt ('{'minimize' if problem.sense == 1 else 'maximize'}', prob);", flush=True)
    for variant, count in counts.items():
        print(f"{variant:<17} {', '.join(f'{count[verdict]} {verdict}' for verdict in VERDICTS)}")


main()
