"""The real console, used the way a person with an assistive tool uses it."""

import subprocess

from accessibility import NotThere, State, application, wait_until


class Console:
    """One run of the program. Whatever is looked for may still be on its way; looking waits for it."""

    def __init__(self, desktop, program, origin, *arguments):
        configuration = desktop.path / "orvia.conf"
        configuration.write_text(f"APIBaseURL={origin}\n")
        self.program = desktop.start(program, "--config", configuration, *arguments)
        try:
            self.root = wait_until("The program joins the accessibility bus.", self._application)
            self.find("frame")
        except NotThere:
            # Left running it would take the place of the next.
            self.program.end()
            raise
        self.take_keyboard()

    def end(self):
        """Answers the exit status."""
        return self.program.end()

    # Looking

    def find(self, role=None, name=None, within=None, **more):
        """The first thing showing that fits."""
        return wait_until(
            f"There is a {role or 'thing'} named {name!r} {more or ''}",
            lambda: next(iter((within or self.root).all(role, name, **more)), None),
        )

    def gone(self, role=None, name=None, within=None, **more):
        """Waits until nothing that fits is showing."""
        wait_until(
            f"There is no {role or 'thing'} named {name!r} {more or ''}",
            lambda: not (within or self.root).all(role, name, **more),
        )

    def focused(self, role=None, name=None):
        """Waits until the keyboard is where it is expected."""
        return self.find(role, name, state=State.FOCUSED)

    def row(self, list_name, text):
        """The row of a list whose name holds the text."""
        return self.find("list item", lambda name: text in name, within=self.find("list", list_name))

    def composer(self, name="Message"):
        return self.find("text", name, state=State.EDITABLE)

    # Acting

    def press(self, *keys):
        """Presses keys one after the other, named as in "Return" or "shift+Return"."""
        _xdotool("key", "--clearmodifiers", "--delay", "8", *keys)

    def type_text(self, text):
        """Types on the keyboard what it has keys for."""
        _xdotool("type", "--clearmodifiers", "--delay", "8", "--", text)

    def click(self, node):
        """With the mouse, in the middle."""
        x, y = wait_until(f"{node} has a place", lambda: node.centre)
        _xdotool("mousemove", "--sync", x, y, "click", 1)

    def activate(self, node):
        """As an assistive tool does."""
        known = {"Press", "Toggle", "ShowMenu"}
        node.do(wait_until(f"{node} can be activated", lambda: next(filter(known.__contains__, node.actions), None)))

    def take_keyboard(self):
        """Gives the keyboard to the newest visible window; no window manager does."""
        search = ["xdotool", "search", "--onlyvisible", "--pid", str(self.program.process.pid)]
        found = subprocess.run(search, check=False, timeout=30, capture_output=True, text=True).stdout.split()
        if found:
            _xdotool("windowfocus", "--sync", found[-1])

    # Steps that many tests begin with

    def sign_in(self, agent, password):
        self.find("text", "Email").set_text(f"{agent}@tessaly.example")
        self.find("password text", "Password").set_text(password)
        self.activate(self.find("push button", "Sign In"))
        self.row("Conversations", "")
        self.find("label", "Connected")

    def sign_out(self):
        self.click(self.find("push button", "Settings"))
        self.click(self.find("push button", "Sign Out"))
        self.find("push button", "Sign In")

    def open(self, visitor):
        """Opens the conversation of the visitor and waits for its thread."""
        self.click(self.row("Conversations", visitor))
        self.find("label", visitor)
        self.row("Messages", "")
        return self.find("list", "Messages")

    def choose_action(self, text):
        """Chooses an item of the actions menu with the mouse."""
        self.click(self.find("push button", "More actions"))
        self.click(self.find("menu item", text))
        self.gone("menu item", text)

    def choose(self, combo_box, text):
        """Chooses a row of a picker, which is found by its label."""
        picker = self.find("combo box", description=combo_box)
        self.activate(picker)
        self.click(self.find("list item", text, within=picker))
        self.find("combo box", text, description=combo_box)

    def _application(self):
        if not self.program.is_running:
            raise NotThere(f"The console ended with status {self.program.process.returncode}.")
        return application(self.program.process.pid)


def _xdotool(*arguments):
    subprocess.run(["xdotool", *(str(argument) for argument in arguments)], check=True, timeout=30)
