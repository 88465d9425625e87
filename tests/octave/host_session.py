"""Octave's host layer at the prompt: Ctrl-C, and `exit` in a function that the module calls."""

import os
import pathlib
import time
import unittest

import terminal

FUNCTIONS = {
    "quick": "",
    "pausing": "pause (0.02);",
    "endless": "while true, end",
    "catching": "try, error ('x'); catch, end; pause (0.02);",
    "leaving": "exit (5);",
    "leaving_nested": "host_probe ('poll', 'leaving', 10);",
    "nested": "host_probe ('poll', 'pausing', 1000);",
}


class HostSession(unittest.TestCase):
    def setUp(self):
        for name, body in FUNCTIONS.items():
            pathlib.Path(name + ".m").write_text(f"function {name} (varargin)\n{body}\nend\n")
        self.octave = terminal.Octave(pathlib.Path(os.environ["KALVO_BUILD"]) / "probe")
        self.addCleanup(self.octave.close)

    def test_a_press_stops_the_polling_and_keeps_the_result(self):
        for name in ("quick", "pausing", "endless", "catching"):
            with self.subTest(name):
                self.octave.start(f"r = host_probe ('poll', '{name}', 1e8)")
                time.sleep(0.5)
                self.octave.press_ctrl_c()
                self.assertIn("r = ", self.octave.read(5))
                self.assertEqual(self.octave.type("disp (40 + 2)"), "42\n")

    def test_the_press_is_seen_once_whatever_runs(self):
        for command in ("drawnow", "x = 1;", "error ('x')"):
            with self.subTest(command):
                self.assertEqual(self.octave.type(f"host_probe ('press', \"{command}\")"), "ans = 1\n")

    def test_a_press_that_nobody_polled_is_octaves(self):
        printed = self.octave.type("for k = 1:3, r = host_probe ('late'), pause (0.1); end")
        self.assertEqual(printed.count("r = 1"), 1)

    def test_the_setting_is_restored_after_an_error(self):
        self.octave.type("try, host_probe ('fail'), end")
        self.octave.start("while true, end")
        time.sleep(0.3)
        self.octave.press_ctrl_c()
        self.octave.read(5)

    def test_a_press_in_a_nested_call_stops_that_call(self):
        self.octave.start("r = host_probe ('poll', 'nested', 1)")
        time.sleep(0.5)
        self.octave.press_ctrl_c()
        self.assertIn("r = 1", self.octave.read(5))

    def test_exit_ends_the_session_after_the_call(self):
        for name in ("leaving", "leaving_nested"):
            with self.subTest(name), terminal.Octave(pathlib.Path(os.environ["KALVO_BUILD"]) / "probe") as octave:
                octave.start(f"host_probe ('poll', '{name}', 10)")
                self.assertEqual(octave.wait_status(), 5)
