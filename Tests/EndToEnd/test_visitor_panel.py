"""The column that describes the visitor."""

from accessibility import State, containing, wait_until
from scenario import Scenario


class VisitorPanel(Scenario):
    def setUp(self):
        super().setUp()
        self.console.open("Helen Brandt")

    def show(self):
        button = self.console.find("push button", "Visitor details")
        self.console.click(button)
        wait_until("The button is checked.", lambda: button.has(State.CHECKED))
        self.panel = self.console.find("filler", "Visitor details")
        self.find("label", "Helen Brandt")

    def find(self, role, name, **more):
        return self.console.find(role, name, within=self.panel, **more)

    def test_is_toggled(self):
        self.show()
        button = self.console.find("push button", "Visitor details")
        self.console.activate(button)
        self.console.gone("filler", "Visitor details")
        self.assertFalse(button.has(State.CHECKED))

    def test_describes_the_visitor(self):
        self.show()
        for text in (
            "Started 5 hours ago",
            "Location",
            "Bremen, Germany (DE)",
            "Europe/Berlin · Weser Telecom",
            "203.0.113.42",
            "Now viewing",
            "Custom data",
            "Previous conversations",
            "Journey",
            "Device",
        ):
            self.find("label", text)
        for label, value in {
            "Customer no.": "DE-10418",
            "Orders": "7",
            "Newsletter": "true",
            "Browser": "Firefox on Linux",
            "Language": "de-DE",
            "Screen": "2560x1440",
            "Referrer": "https://search.example/",
        }.items():
            self.assertIn(label, self.find("text", value).description)

    def test_copies_the_address(self):
        self.show()
        address = self.find("push button", "helen.brandt@example.de", description="Copy email address")
        self.console.click(address)
        self.find("label", "Copied")
        field = self.console.composer()
        self.console.click(field)
        self.console.press("ctrl+v")
        wait_until("The address is pasted.", lambda: field.text == "helen.brandt@example.de")
        self.console.gone("label", "Copied", within=self.panel)

    def test_opens_links_in_the_browser(self):
        self.show()
        self.console.click(self.find("push button", containing("Replacement lids and seals", "parts/lids")))
        wait_until("The page opens.", lambda: len(self.desktop.opened_links) == 1)
        self.console.activate(self.find("push button", "https://shop.larkspur.example/orders/20418"))
        wait_until("The order opens.", lambda: len(self.desktop.opened_links) == 2)
        self.console.activate(self.find("push button", "Grinders"))
        wait_until("The visited page opens.", lambda: len(self.desktop.opened_links) == 3)
        self.assertEqual(
            self.desktop.opened_links,
            [
                "https://larkspur.example/parts/lids",
                "https://shop.larkspur.example/orders/20418",
                "https://larkspur.example/grinders",
            ],
        )

    def test_lists_the_journey(self):
        self.show()
        toggle = self.find("push button", "Show all 12")
        self.console.gone("push button", "Journal", within=self.panel)
        self.console.activate(toggle)
        self.find("push button", "Show less")
        self.assertRegex(self.find("push button", "/account/orders").description, r"^\d+ minutes ago")

    def test_opens_an_earlier_conversation(self):
        self.show()
        self.console.click(self.find("push button", containing("Closed", "Thanks, the descaling worked.")))
        self.console.row("Messages", "Conversation closed by Mara Ellison")
        self.assertEqual(
            [row.name for row in self.console.find("list", "Status").all(state=State.SELECTED)], ["Closed"]
        )
