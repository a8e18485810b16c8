"""The sign-in screen, and what stays of it over a restart."""

from accessibility import State
from scenario import Scenario


class SignIn(Scenario):
    agent = None

    def test_lasts_until_signing_out(self):
        console = self.console
        email = console.focused("text", "Email")
        console.type_text("dana@tessaly.example")
        console.press("Tab")
        password = console.focused("password text", "Password")
        console.press("Return")  # does nothing without a password
        console.type_text("wrong")
        console.press("Return")
        console.find("label", "Invalid email or password")
        self.assertEqual(email.text, "dana@tessaly.example")
        self.assertTrue(password.has(State.FOCUSED))
        self.assertNotIn("wrong", console.root.dump())

        console.press("ctrl+a")
        console.type_text(self.service.password)
        console.click(console.find("push button", "Sign In"))
        console.row("Conversations", "Helen Brandt")
        self.assertEqual(console.end(), 0)

        console = self.console = self.start_console()
        console.row("Conversations", "Helen Brandt")
        console.sign_out()
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
