#!/usr/bin/python3
"""Makes first inputs for the fuzz targets from what the demo service says: record.py SERVICE FOLDER

Starts the service, asks for everything that the console asks for, listens to the live channel for a while, and
writes an input per answer and per few frames into FOLDER/TARGET. Times and some texts differ from run to run;
the corpus keeps what reaches new code, see tools/fuzz.
"""

import hashlib
import json
import pathlib
import re
import subprocess
import sys

# The folder of the sources stays as it is.
sys.dont_write_bytecode = True
sys.path.append(str(pathlib.Path(__file__).parent.parent / "EndToEnd"))

from demo_service import Client, Refused  # noqa: E402

# The order in which Records.cpp lists the records; "A" chooses the first.
RECORDS = (
    "Agent ViewerAgent Product WidgetConfig WidgetGreeting CannedResponse Visitor VisitorMeta VisitorGeo VisitorPage "
    "OrderedStringMap Rating Conversation Attachment Message SearchResult SocketEvent JSONValueIgnored LoginResponse "
    "MeResponse AgentResponse AgentsResponse ProductsResponse ConversationsResponse ConversationResponse "
    "ConversationDetailResponse MessageResponse CannedResponsesResponse SearchResponse"
).split()
ANSWERS = {
    "/v1/agent/me": "MeResponse",
    "/v1/agent/conversations?status=open&includeSnoozed=true": "ConversationsResponse",
    "/v1/agent/conversations?status=closed": "ConversationsResponse",
    "/v1/agent/search?q=lid&limit=3": "SearchResponse",
    "/v1/agent/canned": "CannedResponsesResponse",
    "/v1/agent/teammates": "JSONValueIgnored",
    "/v1/admin/agents": "AgentsResponse",
    "/v1/admin/products": "ProductsResponse",
    "/v1/admin/canned": "CannedResponsesResponse",
}
FRAMES = 240
LONGEST_INPUT = 4096


def compact(value):
    return json.dumps(value, ensure_ascii=False, separators=(",", ":")).encode()


class Recorder:
    def __init__(self, folder):
        self._folder = folder

    def write(self, target, *fields):
        content = b"\x1e".join(field if isinstance(field, bytes) else field.encode() for field in fields)
        if len(content) > LONGEST_INPUT:
            return
        folder = self._folder / target
        folder.mkdir(parents=True, exist_ok=True)
        (folder / hashlib.sha1(content).hexdigest()).write_bytes(content)

    def record(self, name, document):
        self.write("Records", chr(ord("A") + RECORDS.index(name)).encode() + document)

    def answer(self, name, document):
        """The answer as it is, and shorter ones for what is too long."""
        self.record(name, document)
        for key, value in json.loads(document).items():
            for element in value if isinstance(value, list) else []:
                self.record(name, compact({**json.loads(document), key: [element]}))

    def conversation(self, conversation):
        visitor = conversation["visitor"]
        self.record("Conversation", compact(conversation))
        self.record("Visitor", compact(visitor))
        meta = visitor.get("meta") or {}
        geo = meta.get("geo") or {}
        self.record("VisitorMeta", compact(meta))
        self.record("OrderedStringMap", compact(meta.get("data") or {}))
        fields = [geo.get(key) for key in ("city", "region", "country", "countryCode", "timezone", "org")]
        fields += [meta.get(key) for key in ("url", "referrer", "userAgent", "language", "screen")]
        for page in meta.get("pages") or []:
            fields += [page.get("url"), page.get("title")]
        self.write("VisitorPanel", *("-" if field is None else str(field) for field in fields))
        self.write("Links", f"orvia://conversation/{conversation['_id']}", conversation["_id"], "--config", "/none")
        self.write("Frames", b"t" + compact({"type": "conversation", "conversation": conversation}))

    def message(self, message, teammates, canned):
        self.record("Message", compact(message))
        people = [field for agent in teammates for field in (agent["name"], agent["_id"])]
        texts = [field for response in canned for field in (response["shortcut"], response["body"])]
        self.write("Composer", f"{message['body']} @{teammates[1]['name']} @Da", teammates[0]["_id"], *people)
        self.write("Composer", "/" + message["body"][:1], message["_id"], *texts)
        attachment = message.get("attachment") or {}
        self.write("Multipart", message["_id"], "n", attachment.get("name", 'a "note".txt'), "text/plain", message["body"])
        for instant in re.findall(r"\d{4}-[^\"]*Z", json.dumps(message)):
            self.write("Dates", instant, str(len(message["body"]) * 86_400_000), "B")


def record(origin, recorder):
    client = Client(origin, "mara@tessaly.example", "demo")
    sign_in = compact({"email": "mara@tessaly.example", "password": "demo"})
    recorder.answer("LoginResponse", client.answer("POST", "/v1/agent/login", sign_in))
    for path, name in ANSWERS.items():
        recorder.answer(name, client.answer("GET", path))
    teammates = client.get("/v1/agent/teammates")["teammates"]
    canned = client.get("/v1/agent/canned")["canned"]
    conversations = client.get("/v1/agent/conversations", status="open")["conversations"]
    for conversation in conversations:
        recorder.conversation(conversation)
        path = f"/v1/agent/conversations/{conversation['_id']}"
        recorder.answer("ConversationDetailResponse", client.answer("GET", path))
        for message in client.messages(conversation["_id"]):
            recorder.message(message, teammates, canned)
    path = f"/v1/agent/conversations/{conversations[0]['_id']}"
    for step, body in (("assign", {"agentId": None}), ("snooze", {"until": "2030-01-01T09:00:00Z"}), ("close", {})):
        recorder.answer("ConversationResponse", client.answer("POST", f"{path}/{step}", compact(body)))
    recorder.answer("MessageResponse", client.answer("POST", f"{path}/messages", compact({"body": "Hello"})))
    with client.channel() as channel:
        channel.view(conversations[0]["_id"])
        frames = [channel.frame() for _ in range(FRAMES)]
    for frame in frames:
        recorder.record("SocketEvent", frame)
    for start in range(0, len(frames), 4):
        steps = [b"tb"[start % 2 :][:1] + frame for frame in frames[start : start + 4]]
        recorder.write("Frames", b"s" + conversations[0]["_id"].encode(), *steps, b"fc", *steps[:1])
    recorder.write("Links", origin, client.get("/v1/agent/me")["agent"]["_id"], "--help")
    try:
        client.answer("GET", "/v1/agent/conversations/none")
    except Refused as refusal:
        recorder.record("JSONValueIgnored", str(refusal).partition(" ")[2].encode())


def main(program, folder):
    arguments = [program, "--port", "0", "--seed", "1", "--events-per-second", "100", "--conversations", "20"]
    service = subprocess.Popen(arguments, stdout=subprocess.PIPE, text=True)
    try:
        announced = re.match(r"Orvia demo service at (\S+)", service.stdout.readline())
        record(announced[1], Recorder(pathlib.Path(folder)))
    finally:
        service.terminate()
        service.wait()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
