#!/usr/bin/env python3
"""Semidefinite problems from the prompt, against the program csdp (Debian: coinor-csdp).

    bench/semidefinite.py FOLDER [SECONDS]

FOLDER has SDPA files (.dat-s, .dat-s.gz), of which csdp gets SECONDS (60) for each. Times are of the processor, with one thread of
the linear algebra: ours are whole optimisations in this process, the other ones whole programs. Errors are the largest of the
relative infeasibilities and the gap, as each measures them.
"""

import gzip
import math
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
ENVIRONMENT = os.environ | {"OPENBLAS_NUM_THREADS": "1", "OMP_NUM_THREADS": "1"}
MEASURES = ["Relative primal infeasibility", "Relative dual infeasibility", "Real Relative Gap"]


def used():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def peer(file, folder, seconds):
    before = used()
    try:
        output = subprocess.run(["csdp", file], cwd=folder, env=ENVIRONMENT, capture_output=True, text=True, timeout=seconds).stdout
    except subprocess.TimeoutExpired:
        return math.nan, math.nan
    found = [re.search(name + r": *(\S+)", output) for name in MEASURES]
    return used() - before, max(abs(float(each[1])) for each in found) if all(found) else math.nan


def ours(file):
    script = f"addpath ('build/toolbox', 'bench'); semidefinite_times ({{'{file}'}})"
    output = subprocess.run(["octave-cli", "--no-history", "--norc", "--quiet", "--eval", script], cwd=ROOT, env=ENVIRONMENT,
                            capture_output=True, text=True, check=True).stdout
    seconds, error, objective, status = output.split()[-4:]
    return float(seconds), float(error), float(objective), status


def main():
    limit = float(sys.argv[2]) if len(sys.argv) > 2 else 60
    ratios = []
    print(f"{'file':<12} {'csdp s':>9} {'error':>8} {'ours s':>9} {'error':>8} {'objective':>17}")
    with tempfile.TemporaryDirectory() as folder:
        for path in sorted(pathlib.Path(sys.argv[1]).glob("*.dat-s*")):
            name = path.name.split(".")[0]
            plain = pathlib.Path(folder) / f"{name}.dat-s"
            plain.write_bytes(gzip.decompress(path.read_bytes()) if path.suffix == ".gz" else path.read_bytes())
            their_seconds, their_error = peer(plain, folder, limit)
            seconds, error, objective, status = ours(plain)
            if their_seconds >= 0.1:
                ratios.append(seconds / their_seconds)
            print(f"{name:<12} {their_seconds:9.3f} {their_error:8.1e} {seconds:9.3f} {error:8.1e} {objective:17.9e} {status}", flush=True)
    if ratios:
        mean = math.exp(sum(map(math.log, ratios)) / len(ratios))
        print(f"0.1 s and more: geometric mean of ratios {mean:.2f}, largest {max(ratios):.2f}, of {len(ratios)} files")


main()
