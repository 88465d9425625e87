"""Log and progress functions of a user that press Ctrl-C, end the session, clear everything, fail or call kalvoopt
again: the call ends in order, its result is kept, and the session goes on."""

import os
import pathlib
import time
import unittest

import terminal

# A small problem, and one whose search takes minutes.
PROBLEMS = {
    "tiny": "p = struct ('c', [-1; -2], 'a', sparse ([1 1; 1 3]), 'buc', [4; 6], 'blx', [0; 0]);",
    "long": "rand ('twister', 3); a = round (95 * rand (8, 80)) + 5; p = struct ('a', a, 'c', -sum (a), 'buc', "
            "floor (sum (a, 2) / 3), 'blx', zeros (80, 1), 'bux', ones (80, 1), 'ints', struct ('sub', 1:80));",
}

# Bodies of the functions.
FUNCTIONS = {
    "quiet": "stop = 0;",
    "failing": "error ('on purpose')",
    "unassigned": "",
    "stopping": "stop = 1;",
    "endless": "while true, end",
    "catching": "stop = 0; try, error ('x'); catch, end; pause (0.02);",
    "again": "stop = 0; [r, res] = kalvoopt ('minimize echo(0)', tiny ()); assert (res.sol.bas.pobjval, -5, 1e-9);",
    "inside": "stop = 0; r = kalvoopt ('minimize echo(0)', long ()); assert (r, 100007);",
    "clearing": "clear all; stop = 0;",
    "unlocking": "clear -all; clear functions; clear mex; stop = 0;",
    "leaving": "exit (5)",
    "leaving_inside": "stop = 0; kalvoopt ('minimize echo(0)', tiny (), [], struct ('iter', 'leaving', 'iterhandle', 1));",
}

STOPPED, STOPPING = 100007, ("failing", "unassigned", "stopping", "no_such_function")


class CallbacksSession(unittest.TestCase):
    def setUp(self):
        for name, body in PROBLEMS.items():
            pathlib.Path(name + ".m").write_text(f"function p = {name} ()\n{body}\nend\n")
        for name, body in FUNCTIONS.items():
            pathlib.Path(name + ".m").write_text(f"function stop = {name} (varargin)\n{body}\nend\n")
            pathlib.Path(name + "_log.m").write_text(f"function {name}_log (varargin)\n{body}\nend\n")
        self.octave = self.session()

    def session(self):
        octave = terminal.Octave(os.environ["KALVO_TOOLBOX"])
        self.addCleanup(octave.close)
        return octave

    def solve(self, kind, name, problem="tiny"):
        return (f"[r, res] = kalvoopt ('minimize', {problem} (), [], "
                f"struct ('{kind}', '{name}{'_log' * (kind == 'log')}', '{kind}handle', 1));")

    def check(self, expression):
        self.assertEqual(self.octave.type(f"disp ({expression})"), "1\n", expression)

    def check_next_call_works(self):
        self.octave.type("[r2, res2] = kalvoopt ('minimize echo(0)', tiny ());")
        self.check("r2 == 0 && abs (res2.sol.bas.pobjval + 5) < 1e-9")

    def test_the_answer_of_each_function(self):
        for name in ("quiet", "failing", "unassigned", "stopping", "again", "clearing", "unlocking", "no_such_function"):
            for kind in ("log", "iter"):
                with self.subTest(kind=kind, name=name):
                    self.octave.type(self.solve(kind, name))
                    self.check(f"r == {STOPPED * (kind == 'iter' and name in STOPPING)} && res.rcode == r")
                    self.check_next_call_works()

    def test_ctrl_c_ends_a_function_or_the_run_and_keeps_the_result(self):
        for kind, name, problem in (("log", "endless", "tiny"), ("iter", "endless", "tiny"), ("iter", "catching", "long"),
                                    ("iter", "inside", "tiny")):
            with self.subTest(kind=kind, name=name):
                self.octave.start(self.solve(kind, name, problem))
                deadline = time.monotonic() + 20
                while True:    # a log function is called for each line: each needs its press
                    time.sleep(0.3)
                    self.octave.press_ctrl_c()
                    try:
                        self.assertNotIn("*** Error", self.octave.read(1))
                        break
                    except TimeoutError:
                        self.assertLess(time.monotonic(), deadline)
                self.check("(r == 0 || r == 100007) && res.rcode == r")
                self.check_next_call_works()

    def test_exit_ends_the_session_with_its_status(self):
        for kind, name in (("log", "leaving"), ("iter", "leaving"), ("iter", "leaving_inside")):
            with self.subTest(kind=kind, name=name):
                octave = self.session()
                octave.start(self.solve(kind, name))
                self.assertEqual(octave.wait_status(), 5)
