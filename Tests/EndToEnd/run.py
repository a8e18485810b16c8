#!/usr/bin/python3
"""Runs the end-to-end tests: run.py CONSOLE SERVICE [TEST...]

Uses the real console through its accessibility tree, with the real demo service, on a desktop of its own.
"""

import pathlib
import subprocess
import sys
import unittest

# The folder of the sources stays as it is.
sys.dont_write_bytecode = True

from desktop import Desktop  # noqa: E402


class Result(unittest.TextTestResult):
    """Shows what was on the screen when a test failed, while it still is."""

    def addError(self, test, error):
        self._show(test)
        super().addError(test, error)

    def addFailure(self, test, error):
        self._show(test)
        super().addFailure(test, error)

    def _show(self, test):
        console = getattr(test, "console", None)
        if console and console.program.is_running:
            print(f"\n{test.id()} fails with this on the screen:\n{console.root.dump()}", file=sys.stderr)
            picture = f"{test.id()}.png"
            subprocess.run(["import", "-window", "root", picture], check=False, timeout=30)
            print(f"A picture of it is in {picture}.", file=sys.stderr)


def run(console_program, service_program, names):
    desktop = Desktop()
    try:
        # The accessibility library looks for its bus once, when it is loaded.
        from scenario import Scenario

        Scenario.desktop = desktop
        Scenario.console_program = console_program
        Scenario.service_program = service_program
        names = names or sorted(path.stem for path in pathlib.Path(__file__).parent.glob("test_*.py"))
        tests = unittest.defaultTestLoader.loadTestsFromNames(names)
        return unittest.TextTestRunner(resultclass=Result, verbosity=2).run(tests).wasSuccessful()
    finally:
        desktop.end()


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(0 if run(sys.argv[1], sys.argv[2], sys.argv[3:]) else 1)
