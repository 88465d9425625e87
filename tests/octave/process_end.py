"""Processes that exit right after a stopped solve: each ends with the status that it was given. Those that are told to
end in a solve end at once."""

import concurrent.futures
import os
import pathlib
import signal
import subprocess
import time
import unittest

CODE = r"""
rand ('twister', %(seed)d);
a = round (95 * rand (6, 70)) + 5;
prob = struct ('a', a, 'c', round (sum (a)' / 6 + 20 * rand (70, 1)), 'buc', floor (sum (a, 2) / 3), ...
               'blx', zeros (70, 1), 'bux', ones (70, 1));
%(integers)s
param.KLV_DPAR_TIME_LIMIT = 5;
param.KLV_IPAR_OPTIMIZER = '%(optimizer)s';
[r, res] = kalvoopt ('maximize echo(0)', prob, param, struct ('iter', 'stop_at_once', 'iterhandle', 0));
printf ('r=%%d\n', r);
exit (%(status)d);
"""

STOP = "function stop = stop_at_once (handle, caller, info)\n  stop = double (info.KLV_DINF_PROGRESS_TIME > %g);\nend\n"

OPTIMIZERS = ["KLV_OPTIMIZER_AUTOMATIC", "KLV_OPTIMIZER_DUAL_SIMPLEX", "KLV_OPTIMIZER_INTERIOR_POINT"]


def command(seconds, code):
    # A script file may not begin with a function definition.
    return ["octave-cli", "--no-history", "--norc", "-q", "--path", os.environ["KALVO_TOOLBOX"],
            "--eval", "1;\n" + STOP % seconds + code]


def run(case):
    """A process of its own, where a run is stopped: the status that it is to end with, and how it ended."""
    status = case % 2 * 3 + case % 5
    code = CODE % {"seed": case, "status": status, "optimizer": OPTIMIZERS[case % 3],
                   "integers": "prob.ints.sub = 1:70;" if case % 4 else ""}
    return status, subprocess.run(command([0, 0.02, 0.1][case % 3], code), stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, timeout=60)


class ProcessEnd(unittest.TestCase):
    def test_many_processes_end_with_the_status_that_they_were_given(self):
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for case, (status, done) in enumerate(pool.map(run, range(30))):
                with self.subTest(case):
                    self.assertEqual(done.returncode, status, done.stdout)
                    self.assertRegex(done.stdout, r"^r=(100007|0)\n$")

    def test_a_signal_to_end_is_not_left_waiting_for_the_end_of_a_run(self):
        code = CODE.replace("echo(0)", "echo(0) log(run.log)") % {
            "seed": 1, "status": 0, "optimizer": OPTIMIZERS[0], "integers": "prob.ints.sub = 1:70; param = [];"}
        for number in (signal.SIGTERM, signal.SIGHUP):
            process = subprocess.Popen(command(1e9, code), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(2)
            self.assertIsNone(process.poll())
            process.send_signal(number)
            self.assertEqual(process.wait(2), 1)
            self.assertIn("simplex iterations", pathlib.Path("run.log").read_text().splitlines()[-1])
