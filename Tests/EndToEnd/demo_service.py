"""The demo service, and what a teammate does at it with another client: plain HTTP and the live channel."""

import json
import socket
import subprocess
import urllib.error
import urllib.parse
import urllib.request


class Refused(Exception):
    """The service answered with an error status."""


class DemoService:
    """The real demo service of which nobody but the test makes use; nothing happens there by itself."""

    def __init__(self, desktop, program):
        self.program = desktop.start(program, "--quiet", stdout=subprocess.PIPE, stdin=subprocess.DEVNULL)
        self.origin = self._printed("Orvia demo service at ")
        self.password = self._printed('Accounts, all with the password "').rstrip('":')

    def end(self):
        self.program.end()

    def sign_in(self, agent):
        """Another client of the agent, who is named by the local part of the address."""
        return Client(self.origin, f"{agent}@tessaly.example", self.password)

    def _printed(self, beginning):
        for line in self.program.process.stdout:
            if line.startswith(beginning):
                return line[len(beginning) :].strip()
        raise RuntimeError(f"The demo service ended before it printed: {beginning}")


class Client:
    """One signed-in agent, without a console."""

    def __init__(self, origin, email, password):
        self._origin = origin
        self._token = None
        self._token = self.post("/v1/agent/login", email=email, password=password)["token"]

    def get(self, path, **query):
        return json.loads(self.answer("GET", f"{path}?{urllib.parse.urlencode(query)}" if query else path))

    def post(self, path, **body):
        return json.loads(self.answer("POST", path, json.dumps(body).encode()))

    def messages(self, conversation_id):
        return self.get(f"/v1/agent/conversations/{conversation_id}")["messages"]

    def channel(self):
        return Channel(self._origin, self._token)

    def answer(self, method, path, body=None):
        """The bytes that the service answers."""
        request = urllib.request.Request(self._origin + path, data=body, method=method)
        request.add_header("Content-Type", "application/json")
        if self._token:
            request.add_header("Authorization", f"Bearer {self._token}")
        try:
            with urllib.request.urlopen(request, timeout=30) as answer:
                return answer.read()
        except urllib.error.HTTPError as error:
            raise Refused(f"{error.code} {error.read().decode()}") from error


class Channel:
    """A live channel (RFC 6455). Of what the service says on it, only what is asked for is read."""

    def __init__(self, origin, token):
        address = urllib.parse.urlsplit(origin)
        self._socket = socket.create_connection((address.hostname, address.port), timeout=30)
        self._socket.sendall(
            f"GET /ws?token={urllib.parse.quote(token)} HTTP/1.1\r\nHost: {address.netloc}\r\n"
            "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
            "Sec-WebSocket-Key: b3J2aWEtb3J2aWEtb3J2aQ==\r\n\r\n".encode()
        )
        self._received = self._socket.makefile("rb")
        status = self._received.readline()
        if b" 101 " not in status:
            raise Refused(status.decode(errors="replace"))
        while self._received.readline() not in (b"\r\n", b""):
            pass

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._received.close()
        self._socket.close()

    def frame(self):
        """The bytes of the next frame; the demo service sends nothing in pieces."""
        length = self._received.read(2)[1]
        if length >= 126:
            length = int.from_bytes(self._received.read(2 if length == 126 else 8), "big")
        return self._received.read(length)

    def view(self, conversation_id):
        self._send(type="viewing", conversationId=conversation_id)

    def draft(self, conversation_id, text):
        """The empty text ends the draft."""
        self._send(type="typing", conversationId=conversation_id, preview=text)

    def _send(self, **frame):
        payload = json.dumps(frame).encode()
        assert len(payload) < 126
        # A mask of zeros leaves the payload as it is.
        self._socket.sendall(bytes([0x81, 0x80 | len(payload), 0, 0, 0, 0]) + payload)
