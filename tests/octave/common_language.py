"""The .m files that users get are written in the language that Octave and MATLAB share."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
FILES = [*ROOT.glob("toolbox/**/*.m"), *ROOT.glob("host/matlab/*.m")]

# A text in quotes, a comment, a transposition (the quote behind a value), or one more character.
TOKENS = re.compile(r"(?P<value>[\w)\]}.]'+)|'(?:[^'\n]|'')*'|(?P<comment>%[^\n]*)|(?P<rest>.)", re.S)

# What one of the two does not know, in code without texts and comments.
FORBIDDEN = {
    "an operator or comment sign of Octave": r'!|#|"|\*\*|[-+*/|&^]=|\+\+|--|\\\s*$',
    "an end with a name": r"\b(end_?(if|for|while|function|switch|try_catch|unwind_protect|parfor))\b",
    "a block of Octave": r"\b(do|unwind_protect)\b(?!\s*=)",
    "an index behind an index": r"\)\s*[({]",
    "a function of Octave": r"(?<!\.)\b(f?puts|printf|rows|columns|numfields|ifelse|merge|postpad|prepad|ostrsplit|usage"
                            r"|isargout|print_usage|argv)\b\s*\(",
    "an assertion of two values": r"\bassert\s*\((?!isequal|abs)[^<>=~|&()]*,",
}


def code_of(text):
    """The file without comments; texts are empty."""
    return "".join(match["value"] or match["rest"] or ("" if match["comment"] else "''")
                   for match in TOKENS.finditer(text))


def faults(text):
    code = code_of(text)
    found = [f"{name}: {line.strip()}" for name, pattern in FORBIDDEN.items() for line in code.splitlines()
             if re.search(pattern, line)]
    # A file that defines functions begins with one: MATLAB finds those of a script at its end only, Octave never does.
    if re.search(r"^\s*function\b", code, re.M) and not re.match(r"\s*function\b", code):
        found.append("a function in a script")
    return found


class CommonLanguage(unittest.TestCase):
    def test_files_keep_to_it(self):
        self.assertGreater(len(FILES), 10)
        for file in FILES:
            self.assertEqual(faults(file.read_text()), [], file.name)

    def test_what_is_not_in_it_is_seen(self):
        for line in ("if !x, end", "x = 1; # one", "x += 1;", "if x, y = 1; endif", "do, x = 1; until true", "y = f (x)(1);",
                     "% one\nprintf ('x');", "assert (r, 0);", "x = 1;\nfunction f ()\nend", "x = y' + !z';"):
            self.assertEqual(len(faults(line)), 1, line)
