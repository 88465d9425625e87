#!/usr/bin/env python3
"""Ctrl-C at Octave's prompt in every phase of large convex problems: seconds until the prompt is back.

    bench/stop.py [PRESSES [KIND ...]]     for each phase of each problem, 5 by default; qp, quadratic, exponential, matrix

Phases are seen in the log of a first run without a press: until the method begins (record or file, forms, proof of convexity), until
its first iteration (factorisation), iterations, and what comes after the last one (check, result).
"""

import os
import pathlib
import random
import re
import select
import sys
import time

import peers
import problems
import terminal

SIZES = {"qp": 400000, "quadratic": 200000, "exponential": 100000, "matrix": 3000}
PHASES = [("forms", "Optimiser: "), ("factorisation", r" iteration .*\n +\d"), ("iterations", "The interior solution"),
          ("check", terminal.PROMPT + "$")]


def begin(octave, command):
    """Returns when Octave executes the command: a key that comes while it is typed is not kalvoopt's."""
    octave.start(f"puts ('go'); fflush (stdout); {command}")
    text = ""
    while "\ngo" not in text:
        text += os.read(octave.terminal, 65536).decode()


def marks(octave, command):
    """Seconds at which each phase ends."""
    begin(octave, command)
    began, text, ends = time.monotonic(), "", {}
    while len(ends) < len(PHASES):
        if not select.select([octave.terminal], [], [], 300)[0]:
            raise TimeoutError(text)
        text += os.read(octave.terminal, 65536).decode().replace("\r\n", "\n")
        for name, mark in PHASES:
            if name not in ends and re.search(mark, text):
                ends[name] = time.monotonic() - began
    return ends


def stopped(octave, command, moment):
    """The seconds from the key to the prompt, or None when the prompt was there before."""
    begin(octave, command)
    try:
        octave.read(moment)
        return None
    except TimeoutError:
        pass
    pressed = time.monotonic()
    octave.press_ctrl_c()
    octave.read(60)
    return time.monotonic() - pressed


def main():
    presses = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    chance = random.Random(1)
    for kind in sys.argv[2:] or SIZES:
        prompt = peers.Prompt()
        prompt.load(problems.generated(kind, SIZES[kind]))
        octave = prompt.octave
        file = pathlib.Path(prompt.folder.name) / ("problem.mps" if kind == "qp" else "problem.cbf")
        octave.type(f"kalvoopt ('write({file}) echo(0)', prob);", 300)
        for source, command in (("record", "[r, res] = kalvoopt ('minimize', prob);"),
                                ("file", f"[r, res] = kalvoopt ('read({file}) minimize');")):
            ends, began = marks(octave, command), 0
            for name, _ in PHASES:
                delays = []
                for _ in range(presses):
                    delay = stopped(octave, command, chance.uniform(began, ends[name]))
                    if delay is not None:
                        delays.append((delay, octave.type("disp (r)").strip()))
                print(f"{kind:<12} {source:<7} {name:<14} {began:7.2f} to {ends[name]:7.2f} s: "
                      f"{', '.join(f'{delay:.2f}' for delay, _ in delays)}; codes {sorted({code for _, code in delays})}", flush=True)
                began = ends[name]
        octave.close()


main()
