"""What every test starts from: the service with its seed, and a console of a user who is new."""

import os
import unittest

from console import Console
from demo_service import DemoService


class Scenario(unittest.TestCase):
    """Set by the program that runs the tests: the desktop, and where the programs are."""

    desktop = None
    console_program = None
    service_program = None

    agent = "mara"
    arguments = ()

    def setUp(self):
        self.desktop.renew_user()
        self.service = DemoService(self.desktop, self.service_program)
        self.addCleanup(self.service.end)
        self.console = self.start_console()
        if self.agent:
            self.console.sign_in(self.agent, self.service.password)

    def start_console(self):
        console = Console(self.desktop, self.console_program, self.service.origin, *self.arguments)
        self.addCleanup(self.end_console, console)
        return console

    def end_console(self, console):
        self.assertEqual(console.end(), 0, "The console did not end as it was told.")

    def as_agent(self, agent):
        return self.service.sign_in(agent)

    def assert_spoken(self, node, *parts):
        """The name of the node has these parts, in this order."""
        position = 0
        for part in parts:
            found = node.name.find(part, position)
            self.assertGreaterEqual(found, 0, f"{part!r} in {node.name!r}")
            position = found + len(part)

    def make_file(self, name, content):
        path = self.desktop.directory("files") / name
        path.write_bytes(content)
        self.addCleanup(os.unlink, path)
        return path
