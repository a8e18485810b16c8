"""The settings sheet of somebody who is signed in."""

from accessibility import containing, wait_until
from scenario import Scenario

class Settings(Scenario):
    def show(self):
        self.console.click(self.console.find("push button", "Settings"))
        return self.console.find("dialog", "Settings")

    def rows(self):
        """The read-only rows of the section "Account"."""
        return {
            label: self.console.find("label", description=containing(label)).name
            for label in ("Name", "Email", "Role", "Server")
        }

    def test_shows_the_account(self):
        self.show()
        self.assertEqual(
            self.rows(),
            {"Name": "Mara Ellison", "Email": "mara@tessaly.example", "Role": "admin", "Server": "127.0.0.1"},
        )
        self.console.find("label", "3 muted conversations")
        self.console.find("push button", "Canned Responses")

    def test_keeps_the_notification_mode_at_the_service(self):
        console = self.console
        self.show()
        console.find("combo box", "Mine and unassigned", description="Notify me about")
        console.choose("Notify me about", "Mentions only")
        mara = self.as_agent("mara")
        wait_until(
            "The service keeps it.", lambda: mara.get("/v1/agent/me")["agent"]["notifyMode"] == "mentions"
        )


class SettingsOfAnAgent(Scenario):
    agent = "joanna"

    def test_have_no_administration(self):
        console = self.console
        console.click(console.find("push button", "Settings"))
        console.find("label", "agent", description=containing("Role"))
        console.find("combo box", "Mentions only")
        console.gone("push button", "Canned Responses")
        console.gone("label", containing("muted conversation"))
