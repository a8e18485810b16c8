"""One conversation: the thread, what can be done with it, and what comes in live."""

from accessibility import Events, State, containing, wait_until
from scenario import Scenario


class Conversation(Scenario):
    def setUp(self):
        super().setUp()
        self.dana = self.as_agent("dana")

    def sent(self):
        """The newest message at the service."""
        return self.dana.messages("helen-brandt")[-1]

    def test_the_thread_is_read_and_its_files_open(self):
        console = self.console
        thread = console.open("Helen Brandt")
        rows = list(thread.children)
        self.assertEqual(rows[0].name, "Conversation assigned to Mara Ellison")
        self.assertRegex(rows[4].name, r"^.+, Sorry about that, Helen\.")  # the divider comes first
        self.assertEqual(rows[4].text, rows[4].name.split(", ", 1)[1])
        self.assertEqual(rows[5].name, "lid-fitting.pdf, 1.2 MB, Seen")
        note = "Internal note · Dana Whitfield, Mentioned you, @Mara Ellison lids are in stock in Bremen, twelve left."
        self.assertEqual(rows[6].name, note)
        thread.focus()
        console.press("End")
        console.focused("list item", containing("That would be great."))
        console.press("Up")
        console.focused("list item", note)

        with Events("object:text-caret-moved") as events:
            console.click(console.row("Messages", note))
            wait_until("The caret is in the text.", lambda: events.came_from("list item"))

        console.click(console.find("push button", "lid-fitting.pdf, 1.2 MB", within=thread))
        wait_until("The file opens.", lambda: self.desktop.opened_links)
        console.activate(console.find("push button", "cracked-lid.png, 16 kB", within=thread))
        wait_until("The picture opens.", lambda: len(self.desktop.opened_links) == 2)
        files = [message["attachment"] for message in self.dana.messages("helen-brandt") if message.get("attachment")]
        self.assertEqual(self.desktop.opened_links, [self.service.origin + file["url"] for file in reversed(files)])

    def test_the_actions_menu_changes_it_at_the_service(self):
        console = self.console
        console.open("Marcus Oyelaran")

        def kept():
            return self.dana.get("/v1/agent/conversations/marcus-oyelaran")["conversation"]

        console.choose_action("Assign to Me")
        console.find("label", "Assigned to you")
        self.assertEqual(kept()["assigneeId"], "mara")
        console.choose_action("Unassign")
        console.find("label", "Unassigned")
        self.assertIsNone(kept().get("assigneeId"))

        console.choose_action("Snooze Until Tomorrow Morning")
        console.find("label", containing("Snoozed "))
        console.gone("list item", containing("Marcus Oyelaran"))  # but stays open beside the list
        self.assertRegex(kept()["snoozedUntil"], r"T09:00:00(\.000)?Z$")
        console.choose_action("Unsnooze")
        console.row("Conversations", "Marcus Oyelaran")

        console.find("push button", "More actions").focus()
        console.focused("push button", "More actions")
        console.press("Return")
        console.find("menu item", "Mute Notifications")
        console.press("Up", "Up")
        console.focused("menu item", "Mute Notifications")
        console.press("Return")
        console.find("label", "Muted")
        console.click(console.find("push button", "Settings"))
        console.find("label", "4 muted conversations")
        console.press("Escape")

        console.choose_action("Close Conversation")
        console.gone("list item", containing("Marcus Oyelaran"))
        self.assertEqual(kept()["status"], "closed")
        console.row("Messages", "Conversation closed by Mara Ellison")
        console.choose_action("Reopen Conversation")
        console.row("Conversations", "Marcus Oyelaran")
        self.assertEqual(kept()["status"], "open")

    def test_replies_and_notes_are_written(self):
        console = self.console
        console.open("Helen Brandt")
        field = console.composer()
        console.click(field)
        console.type_text("  ")
        console.press("Return")
        console.type_text("It fits")
        console.press("shift+Return")
        console.type_text("both models.")
        console.press("Return")
        console.row("Messages", "It fits")
        self.assertEqual(field.text, "")
        self.assertEqual((self.sent()["sender"], self.sent()["body"]), ("agent", "It fits\nboth models."))
        console.find("list item", containing("Helen Brandt", "It fits", "both models."))

        console.type_text("/s")
        console.find("push button", containing("/sorry"))
        console.press("Up")
        console.focused("push button", containing("/sorry"))
        console.press("Up", "Return")
        wait_until("The body stands for the shortcut.", lambda: field.text.startswith("Within the EU"))
        console.focused("text", "Message")

        field.set_text("Set and sent")
        console.activate(console.find("push button", "Send", state=State.ENABLED))
        console.row("Messages", "Set and sent")
        self.assertEqual(self.sent()["body"], "Set and sent")

        console.click(console.find("push button", "Switch to internal note"))
        field = console.composer("Internal note")
        console.click(field)
        console.type_text("@dan")
        console.find("push button", containing("@Dana Whitfield", "dana@tessaly.example"))
        console.press("Return")
        wait_until("The name is in the text.", lambda: field.text == "@Dana Whitfield ")
        console.type_text("and @jo")
        console.click(console.find("push button", containing("@Joanna Reyes")))
        console.focused("text", "Internal note")
        console.type_text("look")
        console.press("Return")
        console.row("Messages", "Internal note · Mara Ellison, @Dana Whitfield and @Joanna Reyes look")
        self.assertEqual(self.sent()["sender"], "note")
        self.assertEqual(sorted(self.sent()["mentions"]), ["dana", "joanna"])

    def test_files_are_attached(self):
        console = self.console
        console.open("Helen Brandt")
        self.attach("guide.txt", b"Lids and seals\n")
        console.row("Messages", "guide.txt, 15 bytes")
        attachment = self.sent()["attachment"]
        self.assertEqual((attachment["name"], attachment["mime"]), ("guide.txt", "text/plain"))
        self.assertEqual(self.dana.answer("GET", attachment["url"]), b"Lids and seals\n")

        with Events("object:state-changed:showing") as events:
            self.attach("large.bin", bytes(10 * 1024 * 1024 + 1))
            console.find("alert", "Attachments are limited to 10MB.")
            wait_until("The banner is told to show.", lambda: events.came_from("alert"))
        console.gone("alert")

    def test_what_others_do_shows_and_is_announced(self):
        console = self.console
        console.open("Helen Brandt")
        with Events("object:state-changed:showing") as events:
            self.dana.post("/v1/agent/conversations/helen-brandt/messages", body="Call her.", note=True)
            console.row("Messages", "Internal note · Dana Whitfield, Call her.")
            wait_until("It is announced.", lambda: events.came_from("notification"))
            console.find("notification", containing("Call her."))
        console.find("list item", containing("Helen Brandt", "Call her."))

        with self.dana.channel() as channel:
            channel.view("helen-brandt")
            console.find("label", "Dana Whitfield is also viewing")
            channel.draft("helen-brandt", "Bremen has twelve")
            console.row("Messages", "Dana Whitfield is typing, Bremen has twelve")
            channel.draft("helen-brandt", "")
            console.gone("list item", containing("is typing"))
        console.gone("label", "Dana Whitfield is also viewing")

        self.dana.post("/v1/agent/conversations/helen-brandt/assign", agentId="dana")
        console.find("label", "Assigned to Dana Whitfield")
        self.dana.post("/v1/agent/conversations/helen-brandt/close")
        console.gone("list item", containing("Helen Brandt"))
