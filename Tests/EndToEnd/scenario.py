"""What every test starts from: the service with its seed, and a console of a user who is new."""

import unittest

from accessibility import State
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

    def attach(self, name, content):
        """Attaches a file through the dialogue that asks which."""
        path = self.desktop.directory("files") / name
        path.write_bytes(content)
        console = self.console
        console.click(console.find("push button", "Attach a file"))
        dialog = console.find("dialog")
        console.take_keyboard()
        console.find("text", within=dialog, state=State.EDITABLE).set_text(str(path))
        console.press("Return")
        console.gone("dialog")
        console.take_keyboard()
