"""Sidebar, inbox and search."""

from accessibility import State, containing
from scenario import Scenario


class Inbox(Scenario):
    def test_the_sidebar_chooses_what_is_listed(self):
        console = self.console
        console.click(console.row("Products", "Halden Cycles"))
        console.gone("list item", containing("Helen Brandt"))
        for row in console.find("list", "Conversations").all("list item"):
            self.assertIn("Halden Cycles", row.name)

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

        console.activate(console.row("Status", "Open"))
        console.gone("list item", containing("Amelia Prior"))
        console.click(console.find("check box", "Show snoozed"))
        self.assertIn("Snoozed", console.row("Conversations", "Amelia Prior").name)
        console.press("space")
        console.gone("list item", containing("Amelia Prior"))

    def test_rows_open_by_keyboard(self):
        console = self.console
        console.click(console.find("text", "Search conversations"))
        console.press("Tab")
        console.focused("list item", containing("Helen Brandt", "That would be great.", "Unread"))
        console.press("Down")
        console.focused("list item", containing("Marcus Oyelaran"))
        console.find("label", "marcus.oyelaran@example.co.uk")
        console.gone("list item", containing("Marcus Oyelaran", "Unread"))
        self.assertEqual(len(console.root.all("list item", state=State.FOCUSED)), 1)

    def test_search_opens_hits_and_says_when_there_are_none(self):
        console = self.console
        console.click(console.find("text", "Search conversations"))
        console.type_text("descal")
        hits = console.find("list", "Search results")
        console.click(console.find("push button", containing("Noah Lindgren", "Which descaler"), within=hits))
        console.find("label", "noah.lindgren@example.se")

        field = console.find("text", "Search conversations")
        console.click(field)
        console.press("ctrl+a")
        console.type_text("cracked")
        console.find("push button", containing("Helen Brandt", "cracked", "Larkspur Coffee"))
        console.press("Tab", "Tab")
        console.focused("push button", containing("Helen Brandt"))
        console.press("Return")
        console.find("label", "helen.brandt@example.de")

        console.click(field)
        console.press("ctrl+a")
        console.type_text("zzz")
        console.find("label", "Nothing matched that search.")
        console.click(console.find("push button", "Clear search"))
        console.row("Conversations", "Helen Brandt")
        self.assertEqual(field.text, "")
