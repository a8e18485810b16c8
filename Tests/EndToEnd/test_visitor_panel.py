"""The column that describes the visitor."""

from accessibility import State, containing, wait_until
from scenario import Scenario


class VisitorPanel(Scenario):
    def find(self, role, name, **more):
        panel = self.console.find("filler", "Visitor details")
        return self.console.find(role, name, within=panel, **more)

    def test_describes_copies_and_opens(self):
        console = self.console
        console.open("Helen Brandt")
        console.click(console.find("push button", "Visitor details"))
        self.assertIn("Customer no.", self.find("text", "DE-10418").description)
        self.assertRegex(self.find("push button", "/account/orders").description, r"^\d+ minutes ago")

        console.click(self.find("push button", "helen.brandt@example.de", description="Copy email address"))
        self.find("label", "Copied")
        field = console.composer()
        console.click(field)
        console.press("ctrl+v")
        wait_until("The address is pasted.", lambda: field.text == "helen.brandt@example.de")

        links = (containing("Replacement lids and seals"), "https://shop.larkspur.example/orders/20418", "Grinders")
        for link in links:
            before = len(self.desktop.opened_links)
            console.activate(self.find("push button", link))
            wait_until("The page opens.", lambda before=before: len(self.desktop.opened_links) > before)
        self.assertEqual(
            self.desktop.opened_links,
            [
                "https://larkspur.example/parts/lids",
                "https://shop.larkspur.example/orders/20418",
                "https://larkspur.example/grinders",
            ],
        )
        console.activate(self.find("push button", "Show all 12"))
        self.find("push button", "Show less")

        console.click(self.find("push button", containing("Closed", "Thanks, the descaling worked.")))
        console.row("Messages", "Conversation closed by Mara Ellison")
        console.activate(console.find("push button", "Visitor details", state=State.CHECKED))
        console.gone("filler", "Visitor details")
