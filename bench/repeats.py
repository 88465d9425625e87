#!/usr/bin/env python3
"""Many solves of small convex problems from one session: resident memory and descriptors of Octave and its worker must stay.

    bench/repeats.py [COUNT]     solves of each kind, 1000 by default
"""

import os
import pathlib
import sys

import peers
import problems


def state(name, process):
    status = pathlib.Path(f"/proc/{process}/status").read_text()
    resident = int(status.partition("VmRSS:")[2].split()[0]) / 1024
    return f"{name} {process}: {resident:.1f} MB, {len(os.listdir(f'/proc/{process}/fd'))} descriptors"


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    prompt = peers.Prompt()
    for kind in ("qp", "quadratic", "exponential", "matrix"):
        prompt.load(problems.generated(kind, 100))
        for _ in range(4):
            status = prompt.octave.type(f"for k = 1:{count // 4}, [r, res] = kalvoopt ('minimize echo(0)', prob); end; "
                                        "disp (res.sol.itr.solsta)", 600).strip()
            own = prompt.octave.process
            workers = pathlib.Path(f"/proc/{own}/task/{own}/children").read_text().split()
            print(f"{kind:<12} {count // 4} more solves, {status}: "
                  + "; ".join([state("Octave", own), *(state("worker", worker) for worker in workers)]), flush=True)


main()
