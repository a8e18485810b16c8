"""The settings, where an administrator also sets up the team, a product and canned responses."""

from accessibility import containing, wait_until
from scenario import Scenario


class Settings(Scenario):
    def page(self, title):
        """Opens a page of the settings sheet."""
        self.console.click(self.console.find("push button", title))
        self.console.find("dialog", title)

    def create(self, kind, **texts):
        """Fills in a form and leaves it open."""
        self.console.click(self.console.find("push button", f"New {kind}"))
        for label, text in texts.items():
            self.console.find("password text" if label == "Password" else "text", label).set_text(text)

    def confirm(self, button):
        self.console.click(self.console.find("push button", button))
        self.console.gone("push button", "Cancel")

    def row(self, title, text):
        """A row of the page; the sidebar has lists with the same names."""
        return self.console.find("list item", containing(text), within=self.console.find("dialog", title))

    def back(self):
        self.console.click(self.console.find("push button", "Back"))
        self.console.find("push button", "Sign Out")

    def kept(self, path, member, name):
        """What the service keeps under the name, none when there is nothing."""
        found = self.as_agent("mara").get(f"/v1/admin/{path}")[member]
        return next((record for record in found if name in (record.get("name"), record.get("shortcut"))), None)

    def test_an_administrator_sets_up_a_team_and_its_answers(self):
        console = self.console
        console.click(console.find("push button", "Settings"))
        console.find("label", "mara@tessaly.example", description=containing("Email"))
        console.choose("Notify me about", "Mentions only")
        mara = self.as_agent("mara")
        wait_until("The mode is kept.", lambda: mara.get("/v1/agent/me")["agent"]["notifyMode"] == "mentions")

        self.page("Agents")
        self.create("agent", Name="Noor Haddad", Email="noor@tessaly.example", Password="secret")
        console.activate(console.find("check box", "Halden Cycles"))
        self.confirm("Create")
        self.row("Agents", "Noor Haddad")
        noor = self.kept("agents", "agents", "Noor Haddad")
        self.assertEqual((noor["role"], noor["productIds"]), ("agent", ["halden"]))
        self.back()

        self.page("Products")
        self.create("product", Name="Tidewater Books", Slug="tidewater-books")
        self.confirm("Create")
        console.click(self.row("Products", "Tidewater Books"))
        console.find("text", "Header title").set_text("Ask a bookseller")
        console.choose("Position", "Left")
        self.confirm("Save")
        wait_until("The widget is kept.", lambda: self.kept("products", "products", "Tidewater Books").get("widget"))
        widget = self.kept("products", "products", "Tidewater Books")["widget"]
        self.assertEqual((widget["title"], widget["position"]), ("Ask a bookseller", "left"))
        self.back()

        self.page("Canned Responses")
        for shortcut in ("tide", "oops"):
            self.create("canned response", Shortcut=shortcut, Body="The tide table is on its way.")
            self.confirm("Create")
            self.row("Canned Responses", f"/{shortcut}")
        console.click(self.row("Canned Responses", "/oops"))
        console.press("Delete")
        console.gone("list item", containing("/oops"))
        wait_until("The service has forgotten it.", lambda: not self.kept("canned", "canned", "oops"))
        self.back()

        console.press("Escape")
        console.sign_out()
        console.sign_in("mara", self.service.password)
        console.open("Helen Brandt")
        field = console.composer()
        console.click(field)
        console.type_text("/tide")
        console.find("push button", containing("/tide", "The tide table is on its way."))
        console.press("Return")
        wait_until("The new answer is inserted.", lambda: field.text == "The tide table is on its way.")


class SettingsOfAnAgent(Scenario):
    agent = "joanna"

    def test_have_no_administration(self):
        console = self.console
        console.click(console.find("push button", "Settings"))
        console.find("label", "agent", description=containing("Role"))
        console.gone("push button", "Canned Responses")
