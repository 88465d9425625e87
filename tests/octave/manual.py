"""The manual's blocks of Octave code run, page by page, and their lines that end with a comment of numbers have these values."""

import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [ROOT / "README.md", *ROOT.glob("docs/*.md")]


def script_of(page):
    code = "\n".join(re.findall(r"^```octave\n(.*?)^```", page.read_text(), re.M | re.S))
    return re.subn(r"^(\S.*?) +% ([-\d. ]+)$", r"value = \1; assert (value(:)', [\2], 1e-4);", code, flags=re.M)


class Manual(unittest.TestCase):
    def test_code_does_what_the_manual_says(self):
        checked = 0
        for page in PAGES:
            code, values = script_of(page)
            checked += values
            command = ["octave-cli", "--no-history", "--norc", "--path", os.environ["KALVO_TOOLBOX"], "--eval", code]
            with self.subTest(page=page.name):
                done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)
                self.assertEqual(done.returncode, 0, done.stdout)
        self.assertGreater(checked, 10)
