"""An administrator sets up the team, a product and canned responses, and an agent uses them."""

from accessibility import containing, wait_until
from scenario import Scenario


class Administration(Scenario):
    def page(self, title):
        """Opens a page of the settings sheet, the sheet first if need be."""
        console = self.console
        if not console.root.all("dialog"):
            console.click(console.find("push button", "Settings"))
        console.click(console.find("push button", title))
        console.find("dialog", title)

    def row(self, title, text):
        """A row of the page; the sidebar has lists with the same names."""
        page = self.console.find("dialog", title)
        return self.console.find("list item", containing(text), within=page)

    def back(self):
        self.console.click(self.console.find("push button", "Back"))
        self.console.find("push button", "Sign Out")

    def fill(self, **texts):
        for label, text in texts.items():
            role = "password text" if label == "Password" else "text"
            self.console.find(role, label).set_text(text)

    def confirm(self, button):
        self.console.click(self.console.find("push button", button))
        self.console.gone("push button", "Cancel")

    def admin(self, path, member):
        return self.as_agent("mara").get(f"/v1/admin/{path}")[member]

    def test_sets_up_a_team_and_its_answers(self):
        console = self.console

        self.page("Agents")
        console.click(console.find("push button", "New agent"))
        self.fill(Name="Noor Haddad", Email="noor@tessaly.example", Password="secret")
        console.activate(console.find("check box", "Halden Cycles"))
        self.confirm("Create")
        self.row("Agents", "Noor Haddad")
        noor = next(agent for agent in self.admin("agents", "agents") if agent["name"] == "Noor Haddad")
        self.assertEqual((noor["role"], noor["productIds"]), ("agent", ["halden"]))
        self.back()

        self.page("Products")
        console.click(console.find("push button", "New product"))
        self.fill(Name="Tidewater Books", Slug="tidewater-books")
        self.confirm("Create")
        console.click(self.row("Products", "Tidewater Books"))
        console.find("text", "Header title").set_text("Ask a bookseller")
        console.find("text", "Delay (seconds)").set_text("x")
        console.choose("Position", "Left")
        self.confirm("Save")
        product = wait_until(
            "The widget is kept.",
            lambda: next(
                (p for p in self.admin("products", "products") if p["name"] == "Tidewater Books" and p.get("widget")),
                None,
            ),
        )
        self.assertEqual(
            product["widget"],
            {
                "title": "Ask a bookseller",
                "position": "left",
                "greeting": {"enabled": False, "delaySeconds": 0},
            },
        )
        self.back()

        self.page("Canned Responses")
        for shortcut, body in (("tide", "The tide table is on its way."), ("oops", "A mistake.")):
            console.click(console.find("push button", "New canned response"))
            self.fill(Shortcut=shortcut, Body=body)
            self.confirm("Create")
            self.row("Canned Responses", f"/{shortcut}")
        console.click(self.row("Canned Responses", "/oops"))
        console.press("Delete")
        console.gone("list item", containing("/oops"))
        wait_until(
            "The service has forgotten it.",
            lambda: "oops" not in [canned["shortcut"] for canned in self.admin("canned", "canned")],
        )
        self.back()

        console.click(console.find("push button", "Sign Out"))
        console.find("push button", "Sign In")
        console.sign_in("mara", self.service.password)
        console.open("Helen Brandt")
        field = console.composer()
        console.click(field)
        console.type_text("/tide")
        console.find("push button", containing("/tide", "The tide table is on its way."))
        console.press("Return")
        wait_until("The new answer is inserted.", lambda: field.text == "The tide table is on its way.")
