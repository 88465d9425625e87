"""Ctrl-C at a terminal: in every optimiser, in presolve, in a nested call, twice, while a file is read. What was found is kept, the
prompt comes back, nothing goes on computing, the next command works."""

import os
import pathlib
import subprocess
import time
import unittest

import terminal

PROBLEMS = r"""
nodes = 8000; arcs = 120000;
rand ('twister', 1);
tail = ceil (nodes * rand (arcs, 1));
head = mod (tail + ceil ((nodes - 1) * rand (arcs, 1)) - 1, nodes) + 1;
supply = round (40 * rand (nodes, 1) - 20);
supply(end) = supply(end) - sum (supply);
flow = sparse ([tail; head], [1:arcs, 1:arcs]', [ones(arcs, 1); -ones(arcs, 1)], nodes, arcs);
lp = struct ('a', [flow, speye(nodes), -speye(nodes)], 'blc', supply, 'buc', supply, 'blx', zeros (arcs + 2 * nodes, 1));
lp.c = [round(99 * rand (arcs, 1)) + 1; 1000 * ones(2 * nodes, 1)];
lp.bux = [round(59 * rand (arcs, 1)) + 1; inf(2 * nodes, 1)];
block = struct ('a', rand (1500, 3000), 'c', 1 + 4 * rand (3000, 1), 'blx', zeros (3000, 1), 'bux', 10 * ones (3000, 1));
block.blc = 0.3 * sum (block.a, 2);
a = round (95 * rand (8, 80)) + 5;
bag = struct ('a', a, 'c', round (sum (a)' / 8 + 20 * rand (80, 1)), 'buc', floor (sum (a, 2) / 3), ...
              'blx', zeros (80, 1), 'bux', ones (80, 1), 'ints', struct ('sub', 1:80));
small = struct ('a', [1 1], 'c', [1 2], 'blc', 1, 'blx', [0 0]);
"""

LP = "kalvoopt ('minimize echo(0)', lp, struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_{}'))"

# What runs, the command, and the seconds until the key is pressed.
CASES = [
    ("dual simplex", LP.format("DUAL_SIMPLEX"), 1.5),
    ("primal simplex", LP.format("PRIMAL_SIMPLEX"), 1.5),
    ("interior point", LP.format("INTERIOR_POINT"), 1.5),
    ("presolve", "kalvoopt ('minimize echo(0)', block)", 0.2),
    ("integer search", "kalvoopt ('maximize echo(0)', bag)", 2.0),
    ("integer search with its log", "kalvoopt ('maximize echo(3)', bag)", 1.0),
    ("a search in a function of a search", "kalvoopt ('maximize echo(0)', bag, [], struct ('iter', 'nested', 'iterhandle', bag))",
     2.0),
]
POINT = ("int = res.sol.int; disp (all (bag.a * int.xx <= bag.buc + 1e-6) && isequal (int.xx, round (int.xx)) "
         "&& strcmp (int.solsta, 'PRIMAL_FEASIBLE'))")


class Interrupt(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        pathlib.Path("problems.m").write_text(PROBLEMS)
        cls.octave = terminal.Octave(os.environ["KALVO_TOOLBOX"])
        cls.addClassCleanup(cls.octave.close)
        pathlib.Path("nested.m").write_text(
            "function stop = nested (bag, caller, info)\n  stop = double (kalvoopt ('maximize echo(0)', bag) != 0);\nend\n")
        cls.octave.type("source ('problems.m');", 60)

    def computing(self):
        """Workers of this Octave that use a processor or may do so."""
        listed = subprocess.run(["ps", "-o", "stat=,comm=", "--ppid", str(self.octave.process)], stdout=subprocess.PIPE, text=True)
        return [line for line in listed.stdout.splitlines() if "kalvo-worker" in line and line[0] not in "ZS"]

    def interrupt(self, command, seconds, presses=1):
        """The seconds from the first key to the prompt."""
        self.octave.start(command)
        time.sleep(seconds)
        pressed = time.monotonic()
        for _ in range(presses):
            self.octave.press_ctrl_c()
        self.octave.read(20)
        delay = time.monotonic() - pressed
        time.sleep(max(0, 0.5 - delay))
        self.assertEqual(self.computing(), [])
        return delay

    def test_a_press_ends_the_run_and_keeps_what_was_found(self):
        for name, call, seconds in CASES:
            with self.subTest(name):
                self.octave.type("r = []; res = [];")
                delay = self.interrupt(f"[r, res] = {call};", seconds, 2 if "log" in name else 1)
                print(f"Ctrl-C to the prompt: {name} {delay:.2f} s")
                self.assertLess(delay, 0.8)
                printed = self.octave.type("printf ('%d %d %s\\n', r, res.rcode, res.rcodestr);")
                self.assertEqual(printed, "100007 100007 KLV_RES_USER_STOP\n")
                if "integer" in name:
                    self.assertEqual(self.octave.type(POINT), "1\n")
                printed = self.octave.type("[r, res] = kalvoopt ('minimize echo(0)', small); disp (res.sol.bas.pobjval)")
                self.assertEqual(printed, "1\n")
        self.assertLess(self.interrupt("pause (20)", 0.5), 5)    # the key is the session's again

    def test_reading_a_file_can_be_stopped(self):
        with open("large.mps", "w") as file:
            file.write("NAME large\nROWS\n N cost\n" + "".join(f" L r{i}\n" for i in range(100000)) + "COLUMNS\n")
            for j in range(1200000):
                file.write(f" x{j} cost 1 r{j % 100000} 1\n x{j} r{(j + 7) % 100000} 2 r{(j + 50) % 100000} 3\n")
            file.write("RHS\n rhs r0 1\nENDATA\n")
        self.interrupt("[r, res] = kalvoopt ('read(large.mps) echo(0)');", 0.15)
        self.assertEqual(self.octave.type("disp (r)"), "100007\n")
