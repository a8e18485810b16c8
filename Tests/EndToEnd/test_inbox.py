"""Sidebar, inbox and search."""

from accessibility import Events, State, containing, wait_until
from scenario import Scenario


class Filters(Scenario):
    def test_rows_are_named_by_their_labels(self):
        for name, rows in {
            "Products": ["All Products", "Larkspur Coffee", "Halden Cycles", "Fernhill Garden"],
            "Queue": ["All", "Unassigned", "Mine"],
            "Status": ["Open", "Closed"],
        }.items():
            self.assertEqual(self.console.rows(name), rows)
            selected = self.console.find("list", name).all(state=State.SELECTED)
            self.assertEqual([row.name for row in selected], rows[:1])
        self.assertFalse(self.console.find("check box", "Show snoozed").has(State.CHECKED))

    def test_choose_what_is_listed(self):
        console = self.console
        console.click(console.row("Products", "Halden Cycles"))
        console.gone("list item", containing("Helen Brandt"))
        console.find("label", "Halden Cycles")  # the column's title
        for row in console.rows("Conversations"):
            self.assertIn("Halden Cycles", row)

        console.click(console.row("Queue", "Mine"))
        console.find("label", "Nothing Assigned to You")
        console.press("Up")  # the queue has the keyboard
        console.focused("list item", "Unassigned")
        console.row("Conversations", "Marcus Oyelaran")

        console.activate(console.row("Products", "All Products"))
        console.activate(console.row("Queue", "All"))
        console.activate(console.row("Status", "Closed"))
        console.row("Conversations", "Pieter de Vries")
        console.gone("list item", containing("Marcus Oyelaran"))

    def test_snoozed_conversations_appear_when_asked_for(self):
        console = self.console
        console.gone("list item", containing("Amelia Prior"))
        console.click(console.find("check box", "Show snoozed"))
        self.assert_spoken(console.row("Conversations", "Amelia Prior"), "US", "Snoozed")
        self.assertTrue(console.find("check box", "Show snoozed").has(State.CHECKED))
        console.press("space")
        console.gone("list item", containing("Amelia Prior"))


class Rows(Scenario):
    def test_speak_what_they_show(self):
        row = self.console.row("Conversations", "Helen Brandt")
        self.assertEqual(
            row.name.replace("1 minute ago", "now"),
            "Helen Brandt, DE, now, That would be great. Does it also fit the older model?, Larkspur Coffee, Unread",
        )
        self.assert_spoken(self.console.row("Conversations", "Kenji Watanabe"), "JP", "minutes ago", "5/5")

    def test_tell_position_and_size_of_the_list(self):
        rows = list(self.console.find("list", "Conversations").children)
        self.assertEqual(len(rows), 18)
        self.assertEqual([row.index for row in rows], list(range(18)))
        self.assertTrue(rows[0].is_showing)
        self.assertFalse(rows[-1].is_showing)

    def test_tell_who_is_looking(self):
        dana = self.as_agent("dana")
        with dana.channel() as channel:
            channel.view("marcus-oyelaran")
            self.console.find("list item", containing("Marcus", "Dana Whitfield viewing this conversation"))
        self.console.gone("list item", containing("viewing"))

    def test_open_by_keyboard(self):
        console = self.console
        console.click(console.find("text", "Search conversations"))
        console.press("Tab")
        self.assert_spoken(console.focused("list item"), "Helen Brandt")
        with Events("object:state-changed:focused") as events:
            console.press("Down")
            self.assert_spoken(console.focused("list item"), "Marcus Oyelaran")
            console.find("label", "marcus.oyelaran@example.co.uk")
            wait_until(
                "The row is told to have the focus.",
                lambda: any("Marcus" in event.source.name and event.detail1 for event in events.received),
            )
        console.gone("list item", containing("Marcus Oyelaran", "Unread"))
        self.assertEqual(len(console.root.all("list item", state=State.FOCUSED)), 1)

    def test_move_while_somebody_listens(self):
        console = self.console
        console.open("Marcus Oyelaran")
        conversations = console.find("list", "Conversations")
        followed = console.row("Conversations", "Ravi Menon")
        before = [row.name.split(",")[0] for row in conversations.children]
        dana = self.as_agent("dana")
        for visitor in ("sam-okafor", "ravi-menon", "owen-carver", "ravi-menon"):
            dana.send(visitor, f"For {visitor}")
        console.find("list item", containing("Ravi Menon", "now", "For ravi-menon"))
        wait_until("The row moves up.", lambda: followed.index == 0)
        self.assert_spoken(followed, "Ravi Menon", "For ravi-menon")
        after = [row.name.split(",")[0] for row in conversations.children]
        self.assertEqual(after[:3], ["Ravi Menon", "Owen Carver", "Sam Okafor"])
        self.assertEqual(after[3:], [name for name in before if name not in after[:3]])
        selected = conversations.all("list item", state=State.SELECTED)
        self.assertEqual([row.name.split(",")[0] for row in selected], ["Marcus Oyelaran"])

        self.as_agent("priya").post("/v1/agent/conversations/ravi-menon/close")
        console.gone("list item", containing("Ravi Menon"))
        self.assertEqual([row.name.split(",")[0] for row in conversations.children], after[1:])


class Search(Scenario):
    def search(self, text):
        self.console.click(self.console.find("text", "Search conversations"))
        self.console.type_text(text)

    def test_hits_open_by_click_and_by_return(self):
        console = self.console
        self.search("descal")
        hits = console.find("list", "Search results")
        hit = console.find("push button", containing("Noah Lindgren", "Which descaler"), within=hits)
        console.click(hit)
        console.find("label", "noah.lindgren@example.se")

        console.click(console.find("text", "Search conversations"))
        console.press("ctrl+a")
        console.type_text("cracked")
        console.find("push button", containing("Helen Brandt", "cracked", "Larkspur Coffee"))
        console.find("push button", "Clear search")
        console.press("Tab")
        console.focused("push button", "Clear search")
        console.press("Tab")
        console.focused("push button", containing("Helen Brandt"))
        console.press("Return")
        console.find("label", "helen.brandt@example.de")

    def test_without_hits_says_so_and_can_be_cleared(self):
        console = self.console
        self.search("zzz")
        console.find("label", "No Results")
        console.find("label", "Nothing matched that search.")
        console.click(console.find("push button", "Clear search"))
        console.row("Conversations", "Helen Brandt")
        self.assertEqual(console.find("text", "Search conversations").text, "")
