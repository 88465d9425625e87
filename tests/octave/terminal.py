"""A person at Octave's prompt: types lines, presses Ctrl-C, reads what comes back."""

import os
import pty
import select
import time

PROMPT = "@@@ "


class Octave:
    """An interactive Octave on a terminal of its own, with the given folders on its path."""

    def __init__(self, *folders):
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.environ["TERM"] = "dumb"
            path = [word for folder in folders for word in ("--path", str(folder))]
            os.execvp("octave-cli", ["octave-cli", "--no-history", "--norc", "--quiet", "--no-line-editing", *path,
                                     "--eval", f"PS1 ('{PROMPT}'); PS2 ('');", "--persist", "--interactive"])
        self.read(30)

    def start(self, line):
        """Types a line and does not wait."""
        os.write(self.terminal, (line + "\n").encode())

    def press_ctrl_c(self):
        os.write(self.terminal, b"\x03")

    def read(self, seconds=10):
        """What is printed until the prompt comes. Fails when it does not come in time."""
        text, end = "", time.monotonic() + seconds
        while not text.endswith(PROMPT):
            if not select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]:
                raise TimeoutError(f"no prompt after {seconds} s, but: {text!r}")
            text += os.read(self.terminal, 65536).decode(errors="replace")
        return text[:-len(PROMPT)].replace("\r\n", "\n")

    def type(self, line, seconds=10):
        """Types a line and gives what it printed, without its echo."""
        self.start(line)
        return self.read(seconds).partition("\n")[2]

    def wait_status(self, seconds=10):
        """The exit status (negative: the signal), or a failure when the process goes on."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if select.select([self.terminal], [], [], 0.05)[0]:
                try:
                    os.read(self.terminal, 65536)
                except OSError:
                    pass
            process, status = os.waitpid(self.process, os.WNOHANG)
            if process:
                self.process = None
                return os.waitstatus_to_exitcode(status)
        raise TimeoutError(f"Octave did not end within {seconds} s")

    def close(self):
        if self.process:
            os.kill(self.process, 9)
            os.waitpid(self.process, 0)
        os.close(self.terminal)
