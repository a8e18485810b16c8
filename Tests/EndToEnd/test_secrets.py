"""Where the token goes in a whole session: to its origin and into its store, and nowhere else.

The console runs with every log category switched on and is watched at the system calls by which anything leaves
it: files, sockets, the display, programs that it starts.
"""

import base64
import json
import os
import pathlib
import re
import shlex
import stat
import subprocess

from accessibility import containing, wait_until
from gateway import Answer, Gateway
from scenario import Scenario

WATCHED_CALLS = (
    "write,writev,pwrite64,pwritev,pwritev2,sendto,sendmsg,sendmmsg,openat,open,creat,mkdir,mkdirat,chmod,fchmod,"
    "fchmodat,rename,renameat,renameat2,link,linkat,symlink,symlinkat,setxattr,memfd_create,execve,prctl"
)


def spellings(token):
    """The token in every form in which it would still be the token."""
    raw = token.encode()
    forms = {raw, raw.upper(), token.encode("utf-16-le"), token.encode("utf-16-be"), raw.hex().encode(), raw[::-1]}
    forms.add("".join(f"%{byte:02x}" for byte in raw).encode())
    forms.add("".join(f"%{byte:02X}" for byte in raw).encode())
    for shift in range(3):  # what stands before it decides which of three texts it becomes
        encoded = base64.b64encode(bytes(shift) + raw)
        forms.add(encoded[4 if shift else 0 : -4])
        forms.add(base64.urlsafe_b64encode(bytes(shift) + raw)[4 if shift else 0 : -4])
    return forms


def holds_token(content, token):
    return any(form in content for form in spellings(token))


def decoded(text):
    """What the tracer wrote as hexadecimal escapes."""
    return bytes.fromhex(text.replace("\\x", ""))


class Calls:
    """What the tracer has noted of one run."""

    ESCAPED = re.compile(r'"((?:\\x[0-9a-f]{2})*)"')
    LINE = re.compile(r"^\d+ +(\w+)\((.*)$")
    TARGET = re.compile(r"^\d+<([A-Z0-9-]+:\[[^]]*\]|[^>]*)>")

    def __init__(self, path):
        self._lines = path.read_text().splitlines()

    def with_token(self, token):
        """The call and what it went to, of each that held the token."""
        patterns = ["".join(f"\\x{byte:02x}" for byte in form) for form in spellings(token)]
        for line in self._lines:
            if any(pattern in line for pattern in patterns):
                call = self.LINE.match(line)
                name, rest = call.groups() if call else ("?", line)
                target = self.TARGET.match(rest)
                target = target.group(1) if target else rest
                yield name, decoded(target).decode() if target.startswith("\\x") else target

    def about(self, folder):
        """The calls that name a file in the folder, with the names readable."""
        lines = (self.ESCAPED.sub(lambda m: repr(decoded(m.group(1)))[1:], line) for line in self._lines)
        return [line.split(" ", 1)[1].strip() for line in lines if str(folder) in line]


class Secrets(Scenario):
    agent = None

    def setUp(self):
        # The origin is known once the service runs, and the scenario starts both.
        self.tokens = set()
        self.stranger = Gateway()
        self.addCleanup(self.stranger.end)
        super().setUp()

    def start_console(self):
        self.gateway = Gateway(self.service.origin)
        self.addCleanup(self.gateway.end)
        self.gateway.answers["/v1/agent/login"] = self.note_token
        self.service.origin = self.gateway.origin
        self.user = pathlib.Path(os.environ["XDG_CONFIG_HOME"]).parent
        self.traffic = self.user / "bus-traffic"
        self.prepare()
        with self.traffic.open("wb") as traffic:
            monitor = self.desktop.start("dbus-monitor", "--binary", stdout=traffic, stderr=subprocess.DEVNULL)
        self.addCleanup(monitor.end)
        wait_until("The bus is listened to.", lambda: self.traffic.stat().st_size)
        self.real_program = self.console_program
        self.console_program = self.write_wrapper()
        self.started_with = []
        return super().start_console()

    def prepare(self):
        """What the desktop offers before the console starts."""

    def write_wrapper(self):
        """A program that is the console, watched and talkative."""
        (self.user / "temporary").mkdir()
        tracer = ["strace", "-D", "-f", "-q", "-xx", "-yy", "-s", "1000000", "-e", f"trace={WATCHED_CALLS}"]
        self.trace = self.user.with_suffix(".calls")
        tracer += ["-o", str(self.trace), self.real_program]
        wrapper = self.desktop.path / "watched-console"
        wrapper.write_text(
            "#!/bin/sh\n"
            f"export QT_LOGGING_RULES='*=true' QT_FORCE_STDERR_LOGGING=1 TMPDIR={self.user}/temporary\n"
            # A leak sanitizer cannot look at a process that is traced already.
            "export ASAN_OPTIONS=detect_leaks=0\n"
            f'exec {shlex.join(tracer)} "$@" >>{self.user}/stdout 2>>{self.user}/stderr\n'
        )
        wrapper.chmod(0o700)
        return wrapper

    def note_token(self, answer):
        self.tokens.add(json.loads(answer.body)["token"])
        return answer

    @property
    def token(self):
        (token,) = self.tokens
        return token

    def work(self):
        """A session with everything in which the token could go astray."""
        console = self.console
        stranger = self.stranger.origin
        process = pathlib.Path("/proc") / str(console.program.process.pid)
        self.gateway.answers["/v1/agent/conversations/helen-brandt"] = self.add_foreign_content
        self.gateway.answers["/files/moved.png"] = lambda _: Answer(302, {"Location": f"{stranger}/moved.png"}, b"")
        console.sign_in("mara", self.service.password)
        self.screens = [console.root.dump(hidden=True)]

        console.open("Helen Brandt")
        wait_until("Foreign pictures are fetched.", lambda: {"/seen.png", "/moved.png"} <= set(self.stranger.paths()))
        thread = console.find("list", "Messages")
        console.activate(console.find("push button", containing("foreign.pdf"), within=thread))
        wait_until("A foreign file is opened.", lambda: f"{stranger}/foreign.pdf" in self.desktop.opened_links)

        self.attach("guide.txt", b"Lids and seals\n")
        console.row("Messages", "guide.txt, 15 bytes")

        messages = "/v1/agent/conversations/helen-brandt/messages"
        for answer, told in (
            (Answer(307, {"Location": f"{stranger}{messages}"}, b""), "Request failed (307)"),
            (Answer(301, {"Location": f"{stranger}{messages}"}, b""), "Request failed (301)"),
            (Answer(500, {"Content-Type": "application/json"}, b'{"error":"out of order"}'), "out of order"),
            (Answer(401, {"WWW-Authenticate": 'Basic realm="x"'}, b"<p>no</p>"), "Request failed (401)"),
        ):
            self.gateway.answers[messages] = lambda _, answer=answer: answer
            console.click(console.composer())
            console.type_text("hello")
            console.press("Return")
            console.find("alert", told)
        self.screens.append(console.root.dump(hidden=True))

        self.gateway.refuses_channels = True
        self.gateway.break_channels()
        console.gone("label", "Connected")
        self.gateway.refuses_channels = False
        console.find("label", "Connected")

        link = subprocess.run(
            [self.real_program, "orvia://conversation/kenji-watanabe"], check=True, capture_output=True, timeout=30
        )
        console.find("label", "kenji@example.jp")
        self.started_with = [link.stdout, link.stderr]
        for name in ("cmdline", "environ", "comm"):
            self.started_with.append((process / name).read_bytes())
        self.started_with += [name.read_bytes() for name in process.glob("task/*/comm")]

    def add_foreign_content(self, answer):
        detail = json.loads(answer.body)
        attachments = [
            {"name": "seen.png", "kind": "image", "url": f"{self.stranger.origin}/seen.png"},
            {"name": "moved.png", "kind": "image", "url": "/files/moved.png"},
            {"name": "foreign.pdf", "kind": "file", "url": f"{self.stranger.origin}/foreign.pdf"},
        ]
        for attachment in attachments:
            detail["messages"].append(
                {
                    "_id": attachment["name"],
                    "conversationId": "helen-brandt",
                    "sender": "visitor",
                    "body": "",
                    "attachment": attachment,
                }
            )
        return answer._replace(body=json.dumps(detail).encode())

    def sign_out_and_end(self):
        self.console.sign_out()
        self.assertEqual(self.console.end(), 0)
        ending = re.compile(rf"^{self.console.program.process.pid} +\+\+\+ exited", re.MULTILINE)
        wait_until("All is noted.", lambda: ending.search(self.trace.read_text()))
        self.calls = Calls(self.trace)

    def assert_nothing_holds_it(self, except_for=()):
        """Nothing on the disk, the screen, the bus or the command line, and nothing that strangers were sent."""
        files = [path for path in self.user.rglob("*") if path.is_file() and path not in except_for]
        found = [str(path) for path in files if holds_token(path.read_bytes(), self.token)]
        self.assertEqual(found, [])
        for text in self.screens + self.desktop.opened_links:
            self.assertFalse(holds_token(text.encode(), self.token), text)
        for text in self.started_with:
            self.assertFalse(holds_token(text, self.token), text)
        for request in self.stranger.received:
            self.assertFalse(holds_token(request, self.token), request)
            self.assertNotIn(b"authorization", request.lower())
            self.assertNotIn(b"cookie", request.lower())

    def assert_sent_to_origin_only(self, *stores):
        """Every call that carried the token went to the service, or into one of the stores."""
        port = self.gateway.origin.rsplit(":", 1)[1]
        calls = list(self.calls.with_token(self.token))
        to_service = [target for _, target in calls if target.endswith(f"->127.0.0.1:{port}]")]
        self.assertGreater(len(to_service), 5)  # so that it can be told when it is sent
        elsewhere = [call for call in calls if call[1] not in to_service and not call[1].startswith(stores)]
        self.assertEqual(elsewhere, [])


class InTheKeyring(Secrets):
    def prepare(self):
        keyring = self.desktop.start(
            "gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets",
            f"--control-directory={self.desktop.directory('keyring')}",
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
        )  # fmt: skip
        self.addCleanup(keyring.end)
        keyring.process.stdin.write("password")
        keyring.process.stdin.close()
        keyring.process.stdin = None
        wait_until("The keyring answers.", lambda: self.stored_secret() is not None)

    def stored_secret(self):
        """The token in the keyring, empty when there is none; nothing while no keyring answers."""
        found = subprocess.run(
            ["secret-tool", "lookup", "account", "agentToken"], check=False, capture_output=True, timeout=30
        )
        return None if found.stderr else found.stdout.decode()

    def test_it_goes_to_its_origin_and_encrypted_to_the_keyring(self):
        self.work()
        self.assertEqual(self.stored_secret(), self.token)
        self.assert_nothing_holds_it()
        self.sign_out_and_end()
        self.assertEqual(self.stored_secret(), "")
        self.assert_nothing_holds_it()
        self.assert_sent_to_origin_only()
        # What was searched is what there was: the secret crossed the bus, under a key that was agreed upon.
        traffic = self.traffic.read_bytes()
        for expected in (b"CreateItem", b"dh-ietf1024-sha256-aes128-cbc-pkcs7", b"agentToken"):
            self.assertIn(expected, traffic)
        self.assertNotIn(b"\x05\0\0\0plain\0", traffic)
        self.assertIn(b"qt.", (self.user / "stderr").read_bytes())


class InThePrivateFile(Secrets):
    def test_it_goes_to_its_origin_and_into_a_file_that_is_replaced_whole(self):
        self.work()
        (store,) = (self.user / "data" / "orvia" / "keychain").rglob("*.secret")
        self.assertEqual(store.read_text(), self.token)
        self.assertEqual(stat.S_IMODE(store.stat().st_mode), 0o600)
        for folder in (store.parent, store.parent.parent):
            self.assertEqual(stat.S_IMODE(folder.stat().st_mode), 0o700)
        self.assert_nothing_holds_it(except_for=[store])
        self.sign_out_and_end()
        self.assert_nothing_holds_it()

        # Written under another name that nobody else could open, then put in its place; never opened to others.
        calls = [call for call in self.calls.about(store.parent) if not call.startswith("execve")]
        made = [call for call in calls if "O_CREAT" in call]
        self.assertEqual(len(made), 1, calls)
        self.assertRegex(made[0], r"O_EXCL.*, 0600\b")
        temporary = re.search(r"'([^']*)'", made[0]).group(1)
        self.assertNotEqual(temporary, str(store))
        self.assertEqual([call for call in calls if "chmod" in call.split("(")[0]], [])
        (renamed,) = [call for call in calls if call.startswith("rename")]
        self.assertEqual(re.findall(r"'([^']*)'", renamed), [temporary, str(store)])
        for call in calls:
            if call.startswith("mkdir"):
                self.assertRegex(call, r", 0700\b")
        self.assert_sent_to_origin_only(temporary)
