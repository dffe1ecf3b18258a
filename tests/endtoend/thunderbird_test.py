#!/usr/bin/python3
"""The panel beside Thunderbird's compose windows, from outside. The first argument is the folder of the programs."""

import os
import signal
import subprocess
import sys
import tempfile
import unittest

from desk import Atspi, keys, type_text, until
from large_message import write_large_message
from local_service import Service
from mail_drop import MailDrop
from thunderbird import COMMON, ROOT, Thunderbird
from windows import active_window, frame_of, is_on_screen, owner_of, run, window, windows

PROGRAMS = os.path.realpath(sys.argv.pop(1))
REPLY = "Write: Re: Delivery"  # how the title of a reply to that sample begins

POP_ACCOUNT = """
user_pref("mail.accountmanager.accounts", "account1,account2");
user_pref("mail.account.account2.server", "server2");
user_pref("mail.account.account2.identities", "id1");
user_pref("mail.server.server2.type", "pop3");
user_pref("mail.server.server2.name", "Post");
user_pref("mail.server.server2.hostname", "127.0.0.1");
user_pref("mail.server.server2.port", %d);
user_pref("mail.server.server2.userName", "daniel");
user_pref("mail.server.server2.authMethod", 3);
user_pref("mail.server.server2.socketType", 0);
user_pref("mail.server.server2.directory-rel", "[ProfD]Mail/post");
user_pref("mail.server.server2.login_at_startup", false);
user_pref("mail.server.server2.check_new_mail", false);
"""
FETCH_MAIL = (
    COMMON
    + """
const server = MailServices.accounts.getIncomingServer("server2");
server.password = "anything";
MailServices.pop3.GetNewMail(null, null, inbox("server2"), server);
"""
)
TAGS = COMMON + 'return [...inbox("server2").messages].map(each => [each.mime2DecodedSubject, each.getStringProperty("keywords")]);'


class Panels(unittest.TestCase):
    def setUp(self):
        self.service = Service(PROGRAMS + "/quillmate-service", [])
        self.addCleanup(lambda: self.assertEqual(self.service.end(), 0))

    def start(self, **options):
        thunderbird = Thunderbird(PROGRAMS, self.service, **options)
        self.addCleanup(thunderbird.destroy)
        thunderbird.connect()
        return thunderbird

    def test_a_day_of_writing(self):
        thunderbird = self.start()
        reply = thunderbird.compose("ReplyToSender", "spring catalogue")
        thunderbird.press("push button", "Login")
        thunderbird.wait_for("heading", "Summary")
        thunderbird.wait_for("label", "18 March")
        lines = thunderbird.diagnostics()
        self.assertIn("getting email address from apple helen.marsh@riverside-print.example", lines)
        self.assertNotIn("Message id not found in header", lines)
        thunderbird.press("push button", "Generate response")
        thunderbird.wait_for("label", "Hello Helen,")

        forward = thunderbird.compose("ForwardInline", "three-lake tour")
        until(lambda: len(thunderbird.find_all("heading", "Summary")) == 2, "a second panel, signed in as well")
        new = thunderbird.compose("New")
        until(lambda: len(thunderbird.panels()) == 3, "a third panel")
        thunderbird.close(forward)
        thunderbird.close(reply)
        until(lambda: len(thunderbird.panels()) == 1, "the end of two panels")
        self.assertIsNone(thunderbird.find("label", "Hello Helen,"))

        first = thunderbird.extension()
        os.kill(first, signal.SIGKILL)
        until(lambda: thunderbird.extension() not in (None, first), "another process")
        thunderbird.press("push button", "Login")  # The token went with the process.
        thunderbird.close(new)
        until(lambda: not thunderbird.panels(), "the end of the last panel")
        last = thunderbird.extension()
        self.assertEqual(thunderbird.quit(), 0)
        until(lambda: not os.path.exists(f"/proc/{last}"), "the end of the process")

    def test_beside_the_compose_window(self):
        thunderbird = self.start()
        number = thunderbird.compose("ReplyToSender", "spring catalogue")
        thunderbird.wait_for("push button", "Login")

        def beside(compose, panel):
            """Whether the panel is at the compose window's right or left and as high, give or take a border."""
            left, top, width, height = compose
            at_right = abs(panel[0] - (left + width + 8)) < 8
            at_left = abs(panel[0] + panel[2] - (left - 8)) < 8
            return (at_right or at_left) and abs(panel[1] - top) < 4 and abs(panel[3] - height) < 8

        for place in ((50, 60, 700, 650), (800, 100, 780, 600)):
            thunderbird.with_window(
                number, "composing.moveTo(args[1], args[2]); composing.resizeTo(args[3], args[4]);", *place
            )
            until(
                lambda: beside(frame_of(REPLY), frame_of("Quillmate")),
                "the panel beside the window",
                lambda: f"{frame_of(REPLY)} {frame_of('Quillmate')}",
            )
        self.assertIn(REPLY, active_window())  # The panel takes no keys.
        type_text("My own words.")
        body = "return composing.document.getElementById('messageEditor').contentDocument.body.textContent;"
        until(lambda: "My own words." in thunderbird.with_window(number, body), "the words in the reply")

        run("xdotool", "windowminimize", str(window(REPLY)))
        until(lambda: not is_on_screen("Quillmate"), "the panel minimised")
        run("wmctrl", "-a", REPLY)
        until(lambda: is_on_screen("Quillmate"), "the panel again")

        run("wmctrl", "-c", "Quillmate")
        until(lambda: not thunderbird.panels(), "the panel closed")
        thunderbird.with_window(number, "composing.moveTo(90, 70);")
        thunderbird.compose("New")
        until(lambda: len(thunderbird.panels()) == 1, "the panel of another window, and no other")
        run("wmctrl", "-a", REPLY)
        keys("ctrl+alt+q")
        until(lambda: len(thunderbird.panels()) == 2, "the panel that was closed")
        until(lambda: active_window() == "Quillmate", "the keyboard in the panel")

    def test_process_that_ends(self):
        thunderbird = self.start()
        numbers = [thunderbird.compose("New"), thunderbird.compose("ReplyToSender", "spring catalogue")]
        for number in numbers:
            thunderbird.with_window(number, "composing.moveTo(60, 50); composing.resizeTo(700, 650);")
        until(lambda: frame_of("Write: (no subject)") == frame_of(REPLY), "two windows in one place")
        run("xdotool", "windowminimize", str(window(REPLY)))
        until(lambda: not is_on_screen(REPLY), "one window minimised")
        first = thunderbird.extension()
        os.kill(first, signal.SIGKILL)
        until(lambda: thunderbird.extension() not in (None, first) and windows("Quillmate"), "a panel again")

        def owners():
            return {owner_of(panel) for panel in windows("Quillmate")}

        until(
            lambda: owners() == {window("Write: (no subject)")},
            "a panel beside the window that is to be seen",
            lambda: run("wmctrl", "-lG") + str(owners()),
        )
        run("wmctrl", "-a", REPLY)
        both = {window("Write: (no subject)"), window(REPLY)}
        until(lambda: owners() == both, "a panel for each", lambda: f"{owners()} of {both}")

    def test_large_message(self):
        with tempfile.NamedTemporaryFile("wb", suffix=".eml") as file:
            write_large_message(file)
            thunderbird = self.start(mail=[file.name])
            thunderbird.compose("ReplyToSender", "A long one")
        thunderbird.press("push button", "Login")
        thunderbird.wait_for("label", "5 June")

    def test_new_mail_turns_red(self):
        with open(ROOT + "/samples/mars.eml", "rb") as mars, open(ROOT + "/samples/plain.eml", "rb") as plain:
            drop = MailDrop([plain.read(), mars.read()])  # The one to be marked comes last, when all is said of the first.
        with drop:
            thunderbird = self.start(preferences=POP_ACCOUNT % drop.port)
            until(thunderbird.extension, "the process")
            thunderbird.marionette.run(FETCH_MAIL)

            def tags():
                return dict(thunderbird.marionette.run(TAGS))

            mars = "Observing night on Friday: Mars, and perhaps the comet"
            until(lambda: "$label1" in tags().get(mars, ""), "the tag", lambda: str(tags()))
            plain = "Delivery of the spring catalogue moved to 18 March"
            self.assertNotIn("$label1", tags()[plain])

    def test_program_that_is_missing(self):
        thunderbird = self.start(host_installed=False)
        tabs = "return allWindows('mail:3pane')[0].gTabmail.tabInfo.map(tab => tab.browser?.currentURI?.spec ?? '');"

        def told():
            return [page for page in thunderbird.marionette.run(COMMON + tabs) if page.endswith("explanation.html?missing")]

        until(told, "what to install")
        number = thunderbird.compose("ReplyToSender", "spring catalogue")  # Writing goes on.
        thunderbird.install_host()
        thunderbird.with_window(number, "composing.focus();")
        run("wmctrl", "-a", REPLY)
        keys("ctrl+alt+q")
        thunderbird.wait_for("push button", "Login")
        self.assertEqual(len(told()), 1)  # However often it was tried.


def setUpModule():
    manager = subprocess.Popen(["openbox"])
    unittest.addModuleCleanup(lambda: (manager.terminate(), manager.wait()))
    until(lambda: subprocess.run(["wmctrl", "-m"], capture_output=True).returncode == 0, "the window manager")


if __name__ == "__main__":
    Atspi.init()
    unittest.main(verbosity=2)
