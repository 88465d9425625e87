#!/usr/bin/env python3
"""Prints the crates that are linked with the shim, their licences, and the licence texts of those not under the Apache License."""

import json
import pathlib
import subprocess
import sys

CARGO = sys.argv[1]
HERE = pathlib.Path(__file__).resolve().parent
TARGET = "x86_64-unknown-linux-gnu"


def cargo(*arguments):
    return subprocess.run([CARGO, *arguments, "--locked", "--offline"], cwd=HERE, check=True, capture_output=True, text=True).stdout


tree = cargo("tree", "--target", TARGET, "--edges", "normal,no-proc-macro", "--prefix", "none", "--format", "{p}")
linked = {tuple(line.split()[:2]) for line in tree.splitlines() if line}
crates = [crate for crate in json.loads(cargo("metadata", "--format-version", "1", "--filter-platform", TARGET))["packages"]
          if crate["source"] and (crate["name"], "v" + crate["version"]) in linked]
width = max(len(crate["name"] + crate["version"]) for crate in crates) + 3
print("The crates behind Clarabel, from crates.io, each under one of the licences that it offers. Where these include the Apache\n"
      "License 2.0, that one is used; its text is below. The texts of the others follow.\n")
for crate in crates:
    print(f"{crate['name']} {crate['version']}".ljust(width), crate["license"])
for crate in crates:
    if "Apache" not in crate["license"]:
        folder = pathlib.Path(crate["manifest_path"]).parent
        files = sorted(file for file in folder.iterdir() if file.name.upper().startswith(("LICENSE", "LICENCE", "COPYING", "UNLICENSE")))
        text = "\n".join(file.read_text().strip() for file in files) or \
            f"{crate['license']} License, as its package says without the text; by {', '.join(crate['authors']) or 'its authors'}"
        print(f"\n\n{crate['name']} {crate['version']}\n\n{text}")
print("\n")
