"""One conversation: the thread, what can be done with it, and what comes in live."""

from accessibility import Events, State, containing, wait_until
from scenario import Scenario


class Thread(Scenario):
    def test_rows_speak_what_they_show(self):
        thread = self.console.open("Helen Brandt")
        names = [row.name for row in thread.children]
        self.assertEqual(names[0], "Conversation assigned to Mara Ellison")
        self.assertEqual(names[2], "cracked-lid.png, 16 kB")
        self.assertTrue(names[3].endswith("please answer by mail if that is easier for you., via email"))
        self.assertRegex(names[4], r"^.+, Sorry about that, Helen\.")  # the divider comes first
        self.assertEqual(names[5], "lid-fitting.pdf, 1.2 MB, Seen")
        self.assertEqual(
            names[6],
            "Internal note · Dana Whitfield, Mentioned you, @Mara Ellison lids are in stock in Bremen, twelve left.",
        )
        rows = list(thread.children)
        self.assertEqual([row.description for row in rows], [f"{i} of 8" for i in range(1, 9)])
        self.assertEqual([row.index for row in rows], list(range(8)))
        self.assertEqual(rows[4].text, names[4].split(", ", 1)[1])

    def test_attachments_open_in_the_desktop(self):
        console = self.console
        thread = console.open("Helen Brandt")
        console.click(console.find("push button", "lid-fitting.pdf, 1.2 MB", within=thread))
        wait_until("The file opens.", lambda: self.desktop.opened_links)
        console.activate(console.find("push button", "cracked-lid.png, 16 kB", within=thread))
        wait_until("The picture opens.", lambda: len(self.desktop.opened_links) == 2)
        files = self.as_agent("dana").messages("helen-brandt")
        urls = [message["attachment"]["url"] for message in files if message.get("attachment")]
        self.assertEqual(self.desktop.opened_links, [self.service.origin + url for url in reversed(urls)])

    def test_rows_are_read_by_keyboard(self):
        console = self.console
        thread = console.open("Helen Brandt")
        thread.focus()
        console.press("End")
        self.assert_spoken(console.focused("list item"), "That would be great.")
        console.press("Up")
        self.assert_spoken(console.focused("list item"), "Internal note")


class Actions(Scenario):
    """The actions menu of a conversation that nobody has been assigned."""

    def setUp(self):
        super().setUp()
        self.console.open("Marcus Oyelaran")
        self.dana = self.as_agent("dana")

    def conversation(self):
        return self.dana.conversation("marcus-oyelaran")

    def test_assign(self):
        console = self.console
        console.find("label", "Unassigned")
        console.choose_action("Assign to Me")
        console.find("label", "Assigned to you")
        self.assertEqual(self.conversation()["assigneeId"], "mara")
        console.choose_action("Assign to Dana Whitfield")
        console.find("label", "Assigned to Dana Whitfield")
        console.choose_action("Unassign")
        console.find("label", "Unassigned")
        self.assertIsNone(self.conversation().get("assigneeId"))

    def test_the_menu_names_what_fits(self):
        console = self.console
        console.find("push button", "More actions").focus()
        console.focused("push button", "More actions")
        console.press("Return")
        menu = console.find("popup menu")
        self.assertEqual(
            [item.name for item in menu.all("menu item")],
            [
                "Assign to Me",
                "Assign to Dana Whitfield",
                "Assign to Mara Ellison",
                "Assign to Priya Raman",
                "Snooze Until Tomorrow Morning",
                "Snooze for 3 Days",
                "Mute Notifications",
                "Close Conversation",
            ],
        )
        console.press("Escape")
        console.gone("popup menu")
        console.focused("push button", "More actions")

    def test_snooze_and_unsnooze(self):
        console = self.console
        console.choose_action("Snooze Until Tomorrow Morning")
        console.find("label", containing("Snoozed "))
        console.gone("list item", containing("Marcus Oyelaran"))  # but stays open beside the list
        self.assertRegex(self.conversation()["snoozedUntil"], r"T09:00:00(\.000)?Z$")
        console.choose_action("Unsnooze")
        console.gone("label", containing("Snoozed "))
        console.row("Conversations", "Marcus Oyelaran")
        console.choose_action("Snooze for 3 Days")
        console.find("label", "Snoozed in 3 days")

    def test_mute_by_keyboard(self):
        console = self.console
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
        console.choose_action("Unmute")
        console.gone("label", "Muted")

    def test_close_and_reopen(self):
        console = self.console
        console.choose_action("Close Conversation")
        console.gone("list item", containing("Marcus Oyelaran"))
        self.assertEqual(self.conversation()["status"], "closed")
        console.row("Messages", "Conversation closed by Mara Ellison")
        console.choose_action("Reopen Conversation")
        console.row("Conversations", "Marcus Oyelaran")
        self.assertEqual(self.conversation()["status"], "open")


class Composer(Scenario):
    def setUp(self):
        super().setUp()
        self.console.open("Helen Brandt")
        self.dana = self.as_agent("dana")

    def sent(self):
        """The newest message at the service."""
        return self.dana.messages("helen-brandt")[-1]

    def test_a_reply_is_typed(self):
        console = self.console
        field = console.composer()
        send = console.find("push button", "Send")
        self.assertFalse(send.has(State.ENABLED))
        console.click(field)
        console.type_text("  ")
        console.press("Return")
        self.assertFalse(send.has(State.ENABLED))
        console.type_text("It fits")
        console.press("shift+Return")
        console.type_text("both models.")
        self.assertEqual(wait_until("The text is there.", lambda: field.text), "  It fits\nboth models.")
        console.press("Return")
        console.row("Messages", "It fits")
        self.assertEqual(field.text, "")
        self.assertEqual(self.sent()["body"], "It fits\nboth models.")
        self.assertEqual(self.sent()["sender"], "agent")
        self.assert_spoken(console.row("Conversations", "Helen Brandt"), "It fits", "both models.")

    def test_a_reply_is_set_by_an_assistive_tool(self):
        console = self.console
        field = console.composer()
        field.set_text("Set and sent")
        self.assertEqual(field.text, "Set and sent")
        console.activate(console.find("push button", "Send", state=State.ENABLED))
        console.row("Messages", "Set and sent")
        self.assertEqual(self.sent()["body"], "Set and sent")
        self.assertEqual(field.text, "")

    def test_a_note_mentions_teammates(self):
        console = self.console
        console.click(console.find("push button", "Switch to internal note"))
        console.find("push button", "Switch to reply", state=State.ENABLED)
        field = console.composer("Internal note")
        console.find("push button", "Add note")
        console.click(field)
        console.type_text("@dan")
        console.find("push button", containing("@Dana Whitfield", "dana@tessaly.example"))
        console.press("Return")
        wait_until("The name is in the text.", lambda: field.text == "@Dana Whitfield ")
        console.type_text("and @jo")
        console.click(console.find("push button", containing("@Joanna Reyes")))
        wait_until("The second name too.", lambda: field.text == "@Dana Whitfield and @Joanna Reyes ")
        console.focused("text", "Internal note")
        console.type_text("look")
        console.press("Return")
        console.row("Messages", "Internal note · Mara Ellison, @Dana Whitfield and @Joanna Reyes look")
        self.assertEqual(self.sent()["sender"], "note")
        self.assertEqual(sorted(self.sent()["mentions"]), ["dana", "joanna"])
        self.assertEqual(field.name, "Internal note")

    def test_suggestions_are_reached_by_keyboard(self):
        console = self.console
        field = console.composer()
        console.click(field)
        console.type_text("/s")
        rows = [row.name for row in self.suggestions()]
        self.assertEqual([name.split(",")[0] for name in rows], ["/shipping", "/shipping-eu", "/sorry"])
        console.press("Up")
        console.focused("push button", containing("/sorry"))
        console.press("Up")
        console.focused("push button", containing("/shipping-eu"))
        console.press("Return")
        wait_until("The body stands for the shortcut.", lambda: field.text.startswith("Within the EU"))
        console.focused("text", "Message")

    def test_canned_responses_stand_for_their_shortcut(self):
        console = self.console
        field = console.composer()
        console.click(field)
        console.type_text("/greet")
        console.find("push button", containing("/greet", "Hello! Thank you for writing"))
        console.press("Return")
        text = "Hello! Thank you for writing, how can I help?"
        wait_until("The body stands for the shortcut.", lambda: field.text == text)
        self.assertNotEqual(self.sent()["body"], text)
        console.press("Return")
        console.row("Messages", text)
        self.assertEqual(self.sent()["body"], text)

        field.set_text("/sorry")
        console.activate(console.find("push button", containing("/sorry")))
        wait_until("The body stands for the shortcut.", lambda: field.text.startswith("I am sorry"))

    def suggestions(self):
        first = self.console.find("push button", lambda name: name.startswith("/"))
        return first.parent.all("push button")

    def attach(self, path):
        console = self.console
        console.click(console.find("push button", "Attach a file"))
        dialog = console.find("dialog")
        console.take_keyboard()
        name = console.find("text", within=dialog, state=State.EDITABLE)
        name.set_text(str(path))
        console.press("Return")
        console.gone("dialog")
        console.take_keyboard()

    def test_a_file_is_attached(self):
        self.attach(self.make_file("guide.txt", b"Lids and seals\n"))
        self.console.row("Messages", "guide.txt, 15 bytes")
        attachment = self.sent()["attachment"]
        self.assertEqual((attachment["name"], attachment["mime"]), ("guide.txt", "text/plain"))
        self.assertEqual(self.dana.download(attachment["url"]), b"Lids and seals\n")

    def test_a_failure_is_announced_in_the_banner(self):
        console = self.console
        with Events("object:state-changed:showing") as events:
            self.attach(self.make_file("large.bin", bytes(10 * 1024 * 1024 + 1)))
            console.find("alert", "Attachments are limited to 10MB.")
            wait_until(
                "The banner is told to show.",
                lambda: any(event.source.role == "alert" and event.detail1 for event in events.received),
            )
        console.gone("alert", "Attachments are limited to 10MB.")


class Live(Scenario):
    def setUp(self):
        super().setUp()
        self.thread = self.console.open("Helen Brandt")
        self.dana = self.as_agent("dana")

    def test_messages_of_others_show_and_are_announced(self):
        console = self.console
        with Events("object:state-changed:showing") as events:
            self.dana.send("helen-brandt", "The seal is in the box.")
            console.row("Messages", "The seal is in the box.")
            self.assert_announced(events, "The seal is in the box.")
            self.dana.send("helen-brandt", "Call her on Monday.", note=True)
            console.row("Messages", "Internal note · Dana Whitfield, Call her on Monday.")
            self.assert_announced(events, "Call her on Monday.")
        console.find("list item", containing("Helen Brandt", "Call her on Monday."))

    def assert_announced(self, events, text):
        wait_until(
            f"{text!r} is announced.",
            lambda: any(event.source.role == "notification" and event.detail1 for event in events.received)
            and text in self.console.find("notification").name,
        )

    def test_drafts_and_viewers_show(self):
        console = self.console
        with self.dana.channel() as channel:
            channel.view("helen-brandt")
            console.find("label", "Dana Whitfield is also viewing")
            channel.draft("helen-brandt", "Bremen has twelve")
            console.row("Messages", "Dana Whitfield is typing, Bremen has twelve")
            channel.draft("helen-brandt", "")
            console.gone("list item", containing("is typing"))
        console.gone("label", "Dana Whitfield is also viewing")

    def test_changes_of_others_show(self):
        self.dana.post("/v1/agent/conversations/helen-brandt/assign", agentId="dana")
        self.console.find("label", "Assigned to Dana Whitfield")
        self.dana.post("/v1/agent/conversations/helen-brandt/close")
        self.console.gone("list item", containing("Helen Brandt"))
