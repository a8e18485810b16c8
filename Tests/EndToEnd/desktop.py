"""A desktop of the test's own: a display, a session bus with an accessibility bus, and directories.

Nothing of the user's desktop is read or changed. Every program started here ends with this process, also when
it crashes.
"""

import ctypes
import os
import pathlib
import signal
import subprocess
import tempfile

SCREEN = "1400x1000x24"

# Only the accessibility bus may be started by asking for it: a keyring or a notification server that happens to
# be installed would make runs differ between machines.
BUS_CONFIGURATION = (
    "<busconfig><type>session</type><listen>unix:dir={directory}</listen><servicedir>{services}</servicedir>"
    '<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>'
    '<allow own="*"/></policy></busconfig>'
)

# Of prctl(2).
SET_PARENT_DEATH_SIGNAL = 1
SET_CHILD_SUBREAPER = 36


def _end_with_parent():
    ctypes.CDLL(None).prctl(SET_PARENT_DEATH_SIGNAL, signal.SIGKILL)


class Program:
    """A child process that is told to end, and made to when it does not listen."""

    def __init__(self, *command, **options):
        self.process = subprocess.Popen(
            [str(part) for part in command], preexec_fn=_end_with_parent, text=True, **options
        )

    @property
    def is_running(self):
        return self.process.poll() is None

    def end(self):
        """Answers the exit status."""
        if self.is_running:
            self.process.terminate()
        try:
            return self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            return self.process.wait()
        finally:
            if self.process.stdout:
                self.process.stdout.close()


class Desktop:
    """Becomes the desktop of this process: its environment is what programs started later find."""

    def __init__(self):
        # What the buses start becomes a child of this process when they end, so that it can be ended too.
        ctypes.CDLL(None).prctl(SET_CHILD_SUBREAPER, 1)
        self._directory = tempfile.TemporaryDirectory(prefix="orvia-end-to-end-")
        self.path = pathlib.Path(self._directory.name)
        self._programs = []
        for name in list(os.environ):
            if name.startswith("XDG_") or name in ("WAYLAND_DISPLAY", "AT_SPI_BUS_ADDRESS", "QT_QPA_PLATFORM"):
                del os.environ[name]
        home = self.directory("home")
        # Before the buses start: the accessibility bus has its socket among the user's files.
        os.environ.update(HOME=str(home), XDG_RUNTIME_DIR=str(self.directory("runtime")))
        os.environ.update(
            DISPLAY=self._start_display(),
            DBUS_SESSION_BUS_ADDRESS=self._start_bus(),
            QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            QT_IM_MODULE="none",
            LC_ALL="C.UTF-8",
            TZ="UTC",
            PATH=f"{self._install_browser()}:{os.environ['PATH']}",
        )
        self.renew_user()

    def directory(self, name):
        """A directory of this desktop that only the user can read."""
        path = self.path / name
        path.mkdir(mode=0o700, parents=True, exist_ok=True)
        return path

    def renew_user(self):
        """From here on programs find the directories of a user who has used nothing yet."""
        user = pathlib.Path(tempfile.mkdtemp(prefix="user-", dir=self.path))
        self._opened.unlink(missing_ok=True)
        for kind in ("config", "data", "cache", "state"):
            (user / kind).mkdir()
            os.environ[f"XDG_{kind.upper()}_HOME"] = str(user / kind)

    @property
    def opened_links(self):
        """What programs have asked the desktop to open."""
        return self._opened.read_text().splitlines() if self._opened.exists() else []

    def start(self, *command, **options):
        program = Program(*command, **options)
        self._programs.append(program)
        return program

    def end(self):
        while self._programs:
            self._programs.pop().end()
        for task in pathlib.Path("/proc/self/task").iterdir():
            for orphan in map(int, (task / "children").read_text().split()):
                os.kill(orphan, signal.SIGTERM)
                os.waitpid(orphan, 0)
        self._directory.cleanup()

    def _install_browser(self):
        """A browser that writes down what it is to open. Answers where it is."""
        programs = self.directory("programs")
        self._opened = self.path / "opened-links"
        opener = programs / "xdg-open"
        opener.write_text(f'#!/bin/sh\nprintf "%s\\n" "$1" >>"{self._opened}"\n')
        opener.chmod(0o700)
        return programs

    def _start_display(self):
        reader, writer = os.pipe()
        self.start(
            "Xvfb", "-displayfd", writer, "-screen", "0", SCREEN, "-nolisten", "tcp",
            pass_fds=[writer], stderr=subprocess.DEVNULL,
        )  # fmt: skip
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("The virtual display did not start.")
        return f":{number}"

    def _start_bus(self):
        services = self.directory("services")
        installed = pathlib.Path("/usr/share/dbus-1/services/org.a11y.Bus.service")
        # Without its systemd line, the bus starts the launcher itself.
        lines = [line for line in installed.read_text().splitlines() if not line.startswith("Systemd")]
        (services / installed.name).write_text("\n".join(lines) + "\n")
        configuration = self.path / "bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(directory=self.directory("bus"), services=services))
        bus = self.start(
            "dbus-daemon", "--nofork", "--print-address", f"--config-file={configuration}",
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        )  # fmt: skip
        address = bus.process.stdout.readline().strip()
        if not address:
            raise RuntimeError("The session bus did not start.")
        return address
