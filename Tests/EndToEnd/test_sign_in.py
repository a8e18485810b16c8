"""The sign-in screen, and what stays of it over a restart."""

from accessibility import State
from scenario import Scenario


class SignIn(Scenario):
    agent = None

    def test_a_refusal_is_shown_and_the_fields_stay(self):
        console = self.console
        email = console.focused("text", "Email")
        self.assertFalse(console.find("push button", "Sign In").has(State.ENABLED))
        console.type_text("mara@tessaly.example")
        console.press("Tab")
        password = console.focused("password text", "Password")
        console.press("Return")  # does nothing without a password
        console.type_text("wrong")
        console.press("Return")
        console.find("label", "Invalid email or password")
        self.assertEqual(email.text, "mara@tessaly.example")
        self.assertTrue(password.has(State.FOCUSED))
        self.assertTrue(console.find("push button", "Sign In").has(State.ENABLED))  # so both have a text
        self.assertNotIn("wrong", console.dump())

        console.press("ctrl+a")
        console.type_text(self.service.password)
        console.click(console.find("push button", "Sign In"))
        console.row("Conversations", "Helen Brandt")

    def test_settings_before_it_have_no_sections(self):
        console = self.console
        console.click(console.find("push button", "Server Settings"))
        sheet = console.find("dialog", "Settings")
        console.focused("push button", "Done")
        self.assertFalse(sheet.all("label", "Account") + sheet.all("push button", "Sign Out"))
        console.press("Escape")
        console.gone("dialog")
        console.focused("push button", "Server Settings")

    def test_it_lasts_until_signing_out(self):
        console = self.console
        console.sign_in("dana", self.service.password)
        self.assertEqual(console.end(), 0)

        console = self.console = self.start_console()
        console.row("Conversations", "Helen Brandt")
        console.click(console.find("push button", "Settings"))
        console.click(console.find("push button", "Sign Out"))
        console.gone("dialog")
        self.assertEqual(console.find("text", "Email").text, "")
        self.assertEqual(console.find("password text", "Password").text, "")
        self.assertEqual(console.end(), 0)

        console = self.console = self.start_console()
        console.find("push button", "Sign In")


class StartedByALink(Scenario):
    arguments = ("orvia://conversation/kenji-watanabe",)

    def test_opens_its_conversation_after_signing_in(self):
        self.console.find("label", "kenji@example.jp")
        self.console.row("Messages", "Thank you, that fixed it.")
