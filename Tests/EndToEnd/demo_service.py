"""The demo service, and what a teammate does at it with another client: plain HTTP and the live channel."""

import base64
import json
import os
import socket
import struct
import subprocess
import urllib.error
import urllib.parse
import urllib.request


class Refused(Exception):
    """The service answered with an error status."""


class DemoService:
    """The real demo service of which nobody but the test makes use; nothing happens there by itself."""

    def __init__(self, desktop, program):
        self.program = desktop.start(
            program, "--port", 0, "--quiet", "--seed", 1, stdout=subprocess.PIPE, stdin=subprocess.DEVNULL
        )
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
        return self._ask("GET", f"{path}?{urllib.parse.urlencode(query)}" if query else path)

    def post(self, path, **body):
        return self._ask("POST", path, json.dumps(body).encode())

    def conversation(self, conversation_id):
        return self.get(f"/v1/agent/conversations/{conversation_id}")["conversation"]

    def messages(self, conversation_id):
        return self.get(f"/v1/agent/conversations/{conversation_id}")["messages"]

    def send(self, conversation_id, body, note=False):
        return self.post(f"/v1/agent/conversations/{conversation_id}/messages", body=body, note=note)

    def download(self, url):
        with urllib.request.urlopen(urllib.parse.urljoin(self._origin, url), timeout=30) as answer:
            return answer.read()

    def channel(self):
        return Channel(self._origin, self._token)

    def _ask(self, method, path, body=None):
        return json.loads(self.answer(method, path, body) or b"null")

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
        key = base64.b64encode(os.urandom(16)).decode()
        self._socket.sendall(
            f"GET /ws?token={urllib.parse.quote(token)} HTTP/1.1\r\nHost: {address.netloc}\r\n"
            "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
            f"Sec-WebSocket-Key: {key}\r\n\r\n".encode()
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
        assert len(payload) < 0x10000
        length = bytes([0x80 | len(payload)]) if len(payload) < 126 else b"\xfe" + struct.pack("!H", len(payload))
        mask = os.urandom(4)
        masked = bytes(byte ^ mask[i % 4] for i, byte in enumerate(payload))
        self._socket.sendall(b"\x81" + length + mask + masked)
