"""The toolbox folder as a user installs it: what is in it, what it exports, and that it works from anywhere."""

import os
import pathlib
import resource
import shutil
import subprocess
import unittest

TOOLBOX = pathlib.Path(os.environ["KALVO_TOOLBOX"])
AFIRO = pathlib.Path(os.environ["KALVO_TEST_DATA"]) / "lp" / "afiro.mps"


def solve(toolbox, arguments="", then="printf ('%s', fileread ('/proc/self/maps'));", **environment):
    code = f"""[r, res] = kalvoopt ('minimize info echo(2) read({AFIRO})'{arguments});
               assert (r, 0); assert (res.sol.bas.pobjval, -464.753142857, 1e-6); {then}"""
    command = ["octave-cli", "--no-history", "--norc", "--path", str(toolbox), "--eval", code]
    done = subprocess.run(command, env={**os.environ, **environment}, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=60)
    if done.returncode != 0:
        raise AssertionError(done.stdout)
    return done.stdout


def exports(file):
    listing = subprocess.check_output(["nm", "-D", "--defined-only", TOOLBOX / file], text=True)
    return {line.split()[2] for line in listing.splitlines()}


class ToolboxFolder(unittest.TestCase):
    def test_it_holds_what_a_user_needs_and_nothing_else(self):
        names = {path.name for path in TOOLBOX.iterdir() if path.suffix != ".m"}
        self.assertEqual(names, {"kalvoopt.mex", "libkalvo64.so", "libhighs.so", "libhighs_extras.so", "kalvo-worker",
                                 "examples", "NOTICES"})

    def test_only_the_interfaces_are_exported(self):
        self.assertEqual(exports("kalvoopt.mex"), {"mexFunction", "mexfilerequiredapiversion"})
        others = {name for name in exports("libkalvo64.so") if not name.startswith("KLV_")}
        self.assertEqual(others, set())

    def test_a_copy_elsewhere_works_alone(self):
        copy = pathlib.Path("a copy").resolve()
        shutil.copytree(TOOLBOX, copy)
        self.assertNotIn(str(TOOLBOX), solve(copy))

    def test_another_copy_of_the_engine_in_the_process_is_not_ours(self):
        other = pathlib.Path("libother.so").resolve()
        shutil.copy(TOOLBOX / "libhighs.so", other)
        loaded = solve(TOOLBOX, ", [], struct ('KLV_IPAR_WORKER', 0)", LD_PRELOAD=str(other))
        self.assertIn(str(other), loaded)
        self.assertIn(str(TOOLBOX / "libhighs.so"), loaded)

    def test_without_the_extras_the_iterative_method_takes_the_place_of_the_factorising_one(self):
        copy = pathlib.Path("a copy without extras").resolve()
        shutil.copytree(TOOLBOX, copy)
        asked = ", [], struct ('KLV_IPAR_OPTIMIZER', 3, 'KLV_IPAR_INTPNT_METHOD', 2)"
        ran = "printf ('method %d', res.info.KLV_IINF_INTPNT_METHOD);"
        told = solve(copy, asked, ran)
        self.assertIn("method 2", told)
        self.assertNotIn("Warning", told)
        (copy / "libhighs_extras.so").unlink()
        told = solve(copy, asked, ran)
        self.assertIn("method 1", told)
        self.assertIn("Warning: The interior-point method by factorisation needs a file that is missing", told)

    def test_too_little_memory_for_the_engine_is_said_and_not_waited_for(self):
        code = "r = kalvoopt ('minimize echo(0)', struct ('a', 1, 'c', 1, 'blc', 1)); printf ('code %d', r);"
        command = ["octave-cli", "--no-history", "--norc", "--path", str(TOOLBOX), "--eval", code]
        for megabytes, codes in [(350, "code 3201"), (550, "code (0|3201)"), (4000, "code 0")]:
            done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (megabytes << 20,) * 2))
            self.assertRegex(done.stdout, codes)
