"""What stands between the console and the service: an origin that passes on, notes what it is sent, and misbehaves.

Without a service behind it, it is a stranger's origin, which notes and answers everything with a picture.
"""

import base64
import collections
import http.client
import http.server
import socket
import threading
import urllib.parse

PICTURE = base64.b64decode(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNkYPhfDwAChwGA60e6kgAAAABJRU5ErkJggg=="
)

Answer = collections.namedtuple("Answer", "status headers body")


class Gateway(http.server.ThreadingHTTPServer):
    daemon_threads = True
    block_on_close = False

    def __init__(self, service_origin=None):
        super().__init__(("127.0.0.1", 0), _Handler)
        self.service = urllib.parse.urlsplit(service_origin).netloc if service_origin else None
        self.origin = f"http://127.0.0.1:{self.server_address[1]}"
        self.received = []  # request line, headers and body of every request, as bytes
        self.answers = {}  # by path: what a request gets in place of the service's answer, made from that
        self.refuses_channels = False
        self.channels = []
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def end(self):
        self.break_channels()
        self.shutdown()
        self.server_close()

    def break_channels(self):
        while self.channels:
            # The thread that reads it notices the end and closes it.
            try:
                self.channels.pop().shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def paths(self):
        return [request.split(b" ", 2)[1].decode().split("?")[0] for request in list(self.received)]

    def handle_error(self, request, client_address):
        """A console that ends breaks connections; nobody needs to read of it."""


class _Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def _serve(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        lines = [self.requestline, *(f"{name}: {value}" for name, value in self.headers.items()), "", ""]
        head = "\r\n".join(lines).encode()
        self.server.received.append(head + body)
        path = urllib.parse.unquote(self.path.split("?")[0])
        if not self.server.service:
            self._reply(Answer(200, {"Content-Type": "image/png"}, PICTURE))
        elif self.headers.get("Upgrade"):
            self._pass_channel_on(head)
        else:
            answer = self._ask_service(body)
            change = self.server.answers.get(path)
            self._reply(change(answer) if change else answer)

    do_GET = do_POST = do_PATCH = do_PUT = do_DELETE = _serve

    def _ask_service(self, body):
        connection = http.client.HTTPConnection(self.server.service, timeout=30)
        headers = {name: value for name, value in self.headers.items() if name.lower() not in ("host", "connection")}
        connection.request(self.command, self.path, body or None, headers)
        answer = connection.getresponse()
        content = answer.read()
        connection.close()
        return Answer(answer.status, {"Content-Type": answer.getheader("Content-Type", "")}, content)

    def _reply(self, answer):
        self.send_response(answer.status)
        for name, value in answer.headers.items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(answer.body)))
        self.end_headers()
        self.wfile.write(answer.body)

    def _pass_channel_on(self, head):
        self.close_connection = True
        if self.server.refuses_channels:
            self._reply(Answer(503, {}, b"no channels now"))
            return
        host, port = self.server.service.split(":")
        with socket.create_connection((host, int(port))) as service:
            service.sendall(head)
            self.server.channels += [self.connection, service]
            back = threading.Thread(target=_copy, args=(service, self.connection), daemon=True)
            back.start()
            _copy(self.connection, service)
            back.join()

    def log_message(self, *_):
        pass


def _copy(source, sink):
    try:
        while chunk := source.recv(65536):
            sink.sendall(chunk)
    except OSError:
        pass
    for end in (source, sink):
        try:
            end.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
