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
n = 70;
prob.a = round (95 * rand (6, n)) + 5;
prob.c = round (sum (prob.a)' / 6 + 20 * rand (n, 1));
prob.buc = floor (sum (prob.a, 2) / 3);
prob.blx = zeros (n, 1);
prob.bux = ones (n, 1);
%(integers)s
param.KLV_DPAR_TIME_LIMIT = 5;
param.KLV_IPAR_OPTIMIZER = '%(optimizer)s';
[r, res] = kalvoopt ('maximize echo(0)', prob, param, struct ('iter', 'stop_at_once', 'iterhandle', 0));
printf ('r=%%d\n', r);
exit (%(status)d);
"""

STOP = "function stop = stop_at_once (handle, caller, info)\n  stop = double (info.KLV_DINF_PROGRESS_TIME > %g);\nend\n"

OPTIMIZERS = ["KLV_OPTIMIZER_AUTOMATIC", "KLV_OPTIMIZER_DUAL_SIMPLEX", "KLV_OPTIMIZER_INTERIOR_POINT"]


# Its first factorisation takes a second and sees no stop: it is at it when the process ends.
FACTORIZATION = r"""
rand ('twister', 1);
nodes = 6500;
arcs = 50000;
tail = ceil (nodes * rand (arcs, 1));
head = mod (tail + ceil ((nodes - 1) * rand (arcs, 1)) - 1, nodes) + 1;
k = (1:arcs)';
prob.a = [sparse([tail; head], [k; k], [ones(arcs, 1); -ones(arcs, 1)], nodes, arcs), speye(nodes), -speye(nodes)];
prob.c = [round(99 * rand (arcs, 1)) + 1; 1000 * ones(2 * nodes, 1)];
prob.blc = prob.buc = round (40 * rand (nodes, 1) - 20);
prob.blx = zeros (arcs + 2 * nodes, 1);
prob.bux = [round(59 * rand (arcs, 1)) + 1; inf(2 * nodes, 1)];
param = struct ('KLV_IPAR_OPTIMIZER', 3, 'KLV_IPAR_INTPNT_METHOD', 2, 'KLV_IPAR_PRESOLVE', 0);
[r, res] = kalvoopt ('minimize info echo(0)', prob, param, struct ('iter', 'stop_at_once', 'iterhandle', 0));
printf ('%d %d\n', r, res.info.KLV_IINF_ABANDONED_WORKERS);
exit (3);
"""


def command(seconds, code):
    # A script file may not begin with a function definition.
    return ["octave-cli", "--no-history", "--norc", "-q", "--path", os.environ["KALVO_TOOLBOX"],
            "--eval", "1;\n" + STOP % seconds + code]


def octave(seconds, code):
    """Ends in a process of its own, where a run is stopped after so many seconds."""
    return subprocess.run(command(seconds, code), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60)


def run(case):
    status = case % 2 * 3 + case % 5
    done = octave([0, 0.02, 0.1][case % 3], CODE % {
        "seed": case, "status": status, "optimizer": OPTIMIZERS[case % 3],
        "integers": "prob.ints.sub = 1:n;" if case % 4 else ""})
    return status, done


class ProcessEnd(unittest.TestCase):
    def test_a_hundred_processes_end_with_the_status_that_they_were_given(self):
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for case, (status, done) in enumerate(pool.map(run, range(100))):
                with self.subTest(case):
                    self.assertEqual(done.returncode, status, done.stdout)
                    self.assertRegex(done.stdout, r"^r=(100007|0)\n$")

    def test_a_signal_to_end_is_not_left_waiting_for_the_end_of_a_run(self):
        code = CODE.replace("echo(0)", "echo(0) log(run.log)") % {
            "seed": 1, "status": 0, "optimizer": OPTIMIZERS[0], "integers": "prob.ints.sub = 1:n; param = [];"}
        for number in (signal.SIGTERM, signal.SIGHUP):
            process = subprocess.Popen(command(1e9, code), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(2)
            self.assertIsNone(process.poll())
            process.send_signal(number)
            self.assertEqual(process.wait(2), 1)
            self.assertIn("simplex iterations", pathlib.Path("run.log").read_text().splitlines()[-1])

    def test_a_factorisation_that_goes_on_is_waited_for(self):
        abandoned = 0
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for done in pool.map(lambda seconds: octave(seconds, FACTORIZATION), [0.3, 0.5, 0.7, 1.3, 1.6, 1.9]):
                self.assertEqual(done.returncode, 3, done.stdout)
                self.assertRegex(done.stdout, r"^100007 [01]\n$")
                abandoned += done.stdout.endswith(" 1\n")
        self.assertGreater(abandoned, 0)
