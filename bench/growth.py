#!/usr/bin/env python3
"""Time and memory of sparse convex problems as they grow, beside the engines' own packages.

    bench/growth.py [KIND ...]     qp, quadratic, exponential: all

Memory is a multiple of the record's bytes: what Octave's process grows by at most during a call, all of the worker, and what the
package's process grows by at most from set-up to answer. Seconds of the last line are exponents of n.
"""

import math
import os
import pathlib
import sys

import peers    # finds the packages
import numpy
import problems

SIZES = [1000, 10000, 100000, 1000000]


def memory(process, item):
    status = pathlib.Path(f"/proc/{process}/status").read_text()
    return 1024 * int(status.partition(item + ":")[2].split()[0])


def growth(process, call):
    pathlib.Path(f"/proc/{process}/clear_refs").write_text("5")
    before = memory(process, "VmRSS")
    answer = call()
    return answer, memory(process, "VmHWM") - before


def size(value):
    if isinstance(value, dict):
        return sum(map(size, value.values()))
    return value.data.nbytes + 8 * value.nnz + 8 * value.shape[1] if hasattr(value, "nnz") else numpy.asarray(value).nbytes


def package(problem, kind):
    solve = (peers.quadratic_solver if kind == "qp" else peers.conic_solver)(problem)

    def measured():
        answer, grown = growth(os.getpid(), solve)
        answer.worker = grown / 1e6
        return answer

    return peers.apart(measured, 120)


def main():
    for kind in sys.argv[1:] or ["qp", "quadratic", "exponential"]:
        print(f"{kind:<12} {'MB':>7} {'ours s':>8} {'engine s':>8} {'check s':>8} {'package s':>9} {'ratio':>6} {'Octave':>7} {'worker':>7} "
              f"{'package':>7}  status")
        times = []
        for n in SIZES:
            problem = problems.generated(kind, n)
            data = size(problems.record(problem))
            prompt = peers.Prompt()
            prompt.load(problem)
            ours, host = growth(prompt.octave.process, prompt.solve)
            theirs = package(problem, kind)
            print(f"{n:<12} {data / 1e6:7.1f} {ours.seconds:8.3f} {ours.engine:8.3f} {ours.check:8.3f} {theirs.seconds:9.3f} "
                  f"{ours.seconds / theirs.seconds:6.2f} {host / data:7.1f} {1e6 * ours.worker / data:7.1f} {1e6 * theirs.worker / data:7.1f}  "
                  f"{ours.status} {theirs.status}", flush=True)
            prompt.octave.close()
            if not ours.solved:
                break
            times.append([math.log(value) for value in (n, ours.seconds, ours.engine, theirs.seconds)])
        logs = numpy.array(times[1:]).T
        exponents = [numpy.polyfit(logs[0], row, 1)[0] for row in logs[1:]]
        print("exponents from 10000 on: ours {:.2f}, engine {:.2f}, package {:.2f}".format(*exponents))


main()
