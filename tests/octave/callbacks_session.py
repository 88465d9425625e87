"""Log and progress functions of a user that press Ctrl-C, end the session, clear everything, fail or call kalvoopt
again: the call ends in order, its result is kept, and the session goes on."""

import os
import pathlib
import time
import unittest

import terminal

TINY = "struct ('c', [-1; -2], 'a', sparse ([1 1; 1 3]), 'blc', [], 'buc', [4; 6], 'blx', [0; 0], 'bux', [])"

# Bodies of the functions; `tiny` is the small problem.
FUNCTIONS = {
    "quiet": "",
    "failing": "error ('on purpose')",
    "stopping": "stop = 1;",
    "endless": "while true, end",
    "again": "[r, res] = kalvoopt ('minimize echo(0)', tiny ()); assert (r, 0); assert (res.sol.bas.pobjval, -5, 1e-9);",
    "clearing": "clear all; stop = 0;",
    "unlocking": "clear -all; clear functions; clear mex; stop = 0;",
    "leaving": "exit (5)",
}

SOLVE = "[r, res] = kalvoopt ('minimize echo({echo})', tiny (), [], struct ('{kind}', '{name}', '{kind}handle', 1));"


class CallbacksSession(unittest.TestCase):
    def setUp(self):
        pathlib.Path("tiny.m").write_text(f"function prob = tiny ()\nprob = {TINY};\nend\n")
        for name, body in FUNCTIONS.items():
            pathlib.Path(name + ".m").write_text(f"function stop = {name} (varargin)\nstop = 0;\n{body}\nend\n")
            pathlib.Path(name + "_log.m").write_text(f"function {name}_log (varargin)\n{body}\nend\n")
        self.octave = self.session()

    def session(self):
        octave = terminal.Octave(os.environ["KALVO_TOOLBOX"])
        self.addCleanup(octave.close)
        return octave

    def solve(self, kind, name):
        return SOLVE.format(echo=3, kind=kind, name=name + ("_log" if kind == "log" else ""))

    def check(self, expression):
        self.assertEqual(self.octave.type(f"disp ({expression})"), "1\n", expression)

    def check_next_call_works(self):
        self.octave.type("[r2, res2] = kalvoopt ('minimize echo(0)', tiny ());")
        self.check("r2 == 0 && abs (res2.sol.bas.pobjval + 5) < 1e-9")

    def test_the_answer_of_each_function(self):
        for kind, name, code in (("log", "quiet", 0), ("log", "failing", 0), ("log", "again", 0), ("log", "clearing", 0),
                                 ("log", "unlocking", 0), ("iter", "quiet", 0), ("iter", "again", 0),
                                 ("iter", "clearing", 0), ("iter", "unlocking", 0), ("iter", "failing", 100007),
                                 ("iter", "stopping", 100007), ("iter", "no_such_function", 100007),
                                 ("log", "no_such_function", 0)):
            with self.subTest(kind=kind, name=name):
                self.octave.type(self.solve(kind, name))
                self.check(f"r == {code} && res.rcode == {code}")
                self.check_next_call_works()

    def test_ctrl_c_ends_a_function_and_keeps_the_result(self):
        for kind in ("log", "iter"):
            with self.subTest(kind):
                self.octave.start(self.solve(kind, "endless"))
                deadline = time.monotonic() + 20
                while True:    # a log function is called for each line: each needs its press
                    time.sleep(0.3)
                    self.octave.press_ctrl_c()
                    try:
                        self.octave.read(1)
                        break
                    except TimeoutError:
                        self.assertLess(time.monotonic(), deadline)
                self.check("r == 0 || r == 100007")
                self.check("isfield (res, 'rcode') && res.rcode == r")
                self.check_next_call_works()

    def test_exit_ends_the_session_with_its_status(self):
        for kind in ("log", "iter"):
            with self.subTest(kind):
                octave = self.session()
                octave.start(self.solve(kind, "leaving"))
                self.assertEqual(octave.wait_status(), 5)
