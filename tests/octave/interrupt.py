"""Ctrl-C at a terminal: in every optimiser, in presolve, in callbacks, while a file is read. What was found is kept, the
prompt comes back, the next command works."""

import os
import pathlib
import time
import unittest

import terminal

PROBLEMS = r"""
1;
function prob = network (nodes, arcs)
    rand ('twister', 1);
    tail = ceil (nodes * rand (arcs, 1));
    head = mod (tail + ceil ((nodes - 1) * rand (arcs, 1)) - 1, nodes) + 1;
    k = (1:arcs)';
    supply = round (40 * rand (nodes, 1) - 20);
    supply(end) = supply(end) - sum (supply);
    prob.a = [sparse([tail; head], [k; k], [ones(arcs, 1); -ones(arcs, 1)], nodes, arcs), speye(nodes), -speye(nodes)];
    prob.c = [round(99 * rand (arcs, 1)) + 1; 1000 * ones(2 * nodes, 1)];
    prob.blc = supply;
    prob.buc = supply;
    prob.blx = zeros (arcs + 2 * nodes, 1);
    prob.bux = [round(59 * rand (arcs, 1)) + 1; inf(2 * nodes, 1)];
end
function prob = dense (m, n)
    rand ('twister', 2);
    prob.a = rand (m, n);
    prob.c = 1 + 4 * rand (n, 1);
    prob.blc = 0.3 * sum (prob.a, 2);
    prob.blx = zeros (n, 1);
    prob.bux = 10 * ones (n, 1);
end
function prob = knapsack (m, n)
    rand ('twister', 3);
    prob.a = round (95 * rand (m, n)) + 5;
    prob.c = round (sum (prob.a)' / m + 20 * rand (n, 1));
    prob.buc = floor (sum (prob.a, 2) / 3);
    prob.blx = zeros (n, 1);
    prob.bux = ones (n, 1);
    prob.ints.sub = 1:n;
end
function stop = pausing (handle, caller, info)
    stop = 0;
    disp ('in the callback');
    pause (5);
end
function shouting (handle, text)
    disp (text);
end
lp = network (8000, 120000);
block = dense (1500, 3000);
bag = knapsack (8, 80);
small = struct ('a', [1 1], 'c', [1 2], 'blc', 1, 'blx', [0 0]);
"""

LP = "kalvoopt ('minimize echo(0)', lp, struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_{}'))"
BAG = "kalvoopt ('maximize echo({})', bag, [], {})"

# What runs, the command, and the seconds until the key is pressed.
CASES = [
    ("dual simplex", LP.format("DUAL_SIMPLEX"), 1.5),
    ("primal simplex", LP.format("PRIMAL_SIMPLEX"), 1.5),
    ("interior point", LP.format("INTERIOR_POINT"), 1.5),
    ("presolve", "kalvoopt ('minimize echo(0)', block)", 0.2),
    ("integer search", BAG.format(0, "[]"), 2.0),
    ("integer search with its log", BAG.format(3, "[]"), 1.0),
    ("a progress function that pauses", BAG.format(0, "struct ('iter', 'pausing', 'iterhandle', 1)"), 1.0),
    ("a log function", BAG.format(3, "struct ('log', 'shouting', 'loghandle', 1)"), 1.0),
]


class Interrupt(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        pathlib.Path("problems.m").write_text(PROBLEMS)
        cls.octave = terminal.Octave(os.environ["KALVO_TOOLBOX"])
        cls.addClassCleanup(cls.octave.close)
        cls.octave.type("source ('problems.m');", 60)

    def test_a_press_ends_the_run_and_keeps_what_was_found(self):
        delays = {}
        for name, call, seconds in CASES:
            with self.subTest(name):
                self.octave.type("r = []; res = [];")
                self.octave.start(f"[r, res] = {call};")
                time.sleep(seconds)
                pressed = time.monotonic()
                self.octave.press_ctrl_c()
                self.octave.read(20)
                delays[name] = time.monotonic() - pressed
                self.assertLess(delays[name], 1.5)
                printed = self.octave.type("printf ('%d %d %s\\n', r, res.rcode, res.rcodestr);")
                self.assertEqual(printed, "100007 100007 KLV_RES_USER_STOP\n")
                printed = self.octave.type("[r, res] = kalvoopt ('minimize echo(0)', small); disp (res.sol.bas.pobjval)")
                self.assertEqual(printed, "1\n")
        print("Ctrl-C to the prompt: " + ", ".join(f"{name} {delay:.2f} s" for name, delay in delays.items()))

    def test_an_integer_point_found_before_the_press_is_returned(self):
        self.octave.start("[r, res] = kalvoopt ('maximize echo(0)', bag);")
        time.sleep(1.5)
        self.octave.press_ctrl_c()
        self.octave.read(20)
        printed = self.octave.type("int = res.sol.int; disp ([all(bag.a * int.xx <= bag.buc + 1e-6), "
                                   "isequal(int.xx, round (int.xx)), strcmp(int.solsta, 'PRIMAL_FEASIBLE')])")
        self.assertEqual(printed.split(), ["1", "1", "1"])

    def test_the_key_is_the_sessions_again_afterwards(self):
        self.octave.type("r = kalvoopt ('minimize echo(0)', small);")
        self.octave.start("pause (20)")
        time.sleep(0.5)
        self.octave.press_ctrl_c()
        self.octave.read(5)

    def test_reading_a_file_can_be_stopped(self):
        with open("large.mps", "w") as file:
            file.write("NAME large\nROWS\n N cost\n" + "".join(f" L r{i}\n" for i in range(100000)) + "COLUMNS\n")
            for j in range(1200000):
                file.write(f" x{j} cost 1 r{j % 100000} 1\n x{j} r{(j + 7) % 100000} 2 r{(j + 50) % 100000} 3\n")
            file.write("RHS\n rhs r0 1\nENDATA\n")
        self.octave.start("[r, res] = kalvoopt ('read(large.mps) echo(0)');")
        time.sleep(0.15)
        self.octave.press_ctrl_c()
        self.octave.read(20)
        self.assertEqual(self.octave.type("disp (r)"), "100007\n")
