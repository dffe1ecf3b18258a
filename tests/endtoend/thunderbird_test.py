#!/usr/bin/python3
"""The panel beside Thunderbird's compose windows, from outside. The first argument is the folder of the programs."""

import os
import signal
import sys
import tempfile
import unittest

from desk import Atspi, keys, type_text, until
from large_message import write_large_message
from thunderbird import COMMON, ROOT, Thunderbird
from windows import active_window, frame_of, is_on_screen, owner_of, run, start_window_manager, window, windows

PROGRAMS = os.path.realpath(sys.argv.pop(1))
REPLY = "Write: Re: Delivery"  # how the title of a reply to that sample begins
NEW = "Write: (no subject)"

# As an account says it that has fetched mail.
DELIVER = (
    COMMON
    + """
const folder = inbox("server1");
folder.QueryInterface(Ci.nsIMsgLocalMailFolder);
for (const source of args) {
  folder.addMessage(source).orFlags(Ci.nsMsgMessageFlags.New);
}
folder.hasNewMessages = true;
folder.setNumNewMessages(args.length);
folder.biffState = Ci.nsIMsgFolder.nsMsgBiffState_NewMail;
"""
)
TAGS = COMMON + 'return [...inbox("server1").messages].map(each => [each.mime2DecodedSubject, each.getStringProperty("keywords")]);'


class Panels(unittest.TestCase):
    def start(self, **options):
        thunderbird = Thunderbird(PROGRAMS, **options)
        self.addCleanup(thunderbird.destroy)
        thunderbird.connect()
        return thunderbird

    def test_a_day_of_writing(self):
        with tempfile.NamedTemporaryFile("wb", suffix=".eml") as file:
            write_large_message(file)
            thunderbird = self.start(mail=[ROOT + "/samples/plain.eml", file.name])
        reply = thunderbird.compose("ReplyToSender", "spring catalogue")
        thunderbird.press("push button", "Login")
        until(lambda: active_window() == "Quillmate", "the panel before the browser")
        thunderbird.wait_for("heading", "Summary")
        thunderbird.wait_for("label", "18 March")
        lines = thunderbird.diagnostics()
        self.assertIn("getting email address from apple helen.marsh@riverside-print.example", lines)
        self.assertNotIn("Message id not found in header", lines)
        thunderbird.press("push button", "Generate response")
        thunderbird.wait_for("label", "Hello Helen,")

        def tags():
            return dict(thunderbird.marionette.run(TAGS))

        # The one to be marked comes last, when all is said of the first.
        thunderbird.marionette.run(DELIVER, "Subject: Venus\n\nx\n", "Subject: Mars\n\nx\n")
        until(lambda: "$label1" in tags().get("Mars", ""), "the tag", lambda: str(tags()))
        self.assertNotIn("$label1", tags()["Venus"])

        large = thunderbird.compose("ReplyAll", "A long one")
        thunderbird.wait_for("label", "5 June")  # Signed in as well.
        new = thunderbird.compose("New")
        until(lambda: len(thunderbird.panels()) == 3, "a third panel")
        thunderbird.close(large)
        thunderbird.close(reply)
        until(lambda: len(thunderbird.panels()) == 1, "the end of two panels")
        self.assertIsNone(thunderbird.find("label", "Hello Helen,"))

        self.kill_program(thunderbird)
        thunderbird.wait_for("label", "Quillmate has been started anew")
        thunderbird.press("push button", "Login")  # The token went with the process.
        thunderbird.close(new)
        until(lambda: not thunderbird.panels(), "the end of the last panel")
        last = thunderbird.extension()
        self.assertEqual(thunderbird.quit(), 0)
        until(lambda: not os.path.exists(f"/proc/{last}"), "the end of the process")

    def kill_program(self, thunderbird):
        """Ends the process by force and waits for the next."""
        first = thunderbird.extension()
        os.kill(first, signal.SIGKILL)
        until(lambda: thunderbird.extension() not in (None, first), "another process")

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

        def move(window, *place):
            move_and_resize = "composing.moveTo(args[1], args[2]); composing.resizeTo(args[3], args[4]);"
            thunderbird.with_window(window, move_and_resize, *place)

        for place in ((50, 60, 700, 650), (800, 100, 780, 600)):
            move(number, *place)
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
        move(number, 90, 70, 700, 650)
        other = thunderbird.compose("New")
        until(lambda: len(thunderbird.panels()) == 1, "the panel of another window, and no other")
        run("wmctrl", "-a", REPLY)
        keys("ctrl+alt+q")
        until(lambda: len(thunderbird.panels()) == 2, "the panel that was closed")
        until(lambda: active_window() == "Quillmate", "the keyboard in the panel")

        # A new process finds two windows in one place, one of them minimised.
        move(other, 90, 70, 700, 650)
        until(lambda: frame_of(NEW) == frame_of(REPLY), "two windows in one place")
        run("xdotool", "windowminimize", str(window(REPLY)))
        until(lambda: not is_on_screen(REPLY), "one window minimised")
        self.kill_program(thunderbird)

        def owners():
            return {owner_of(panel) for panel in windows("Quillmate")}

        def told():
            return run("wmctrl", "-lG") + str(owners())

        until(lambda: owners() == {window(NEW)}, "a panel beside the window that is to be seen", told)
        run("wmctrl", "-a", REPLY)
        until(lambda: owners() == {window(NEW), window(REPLY)}, "a panel for each", told)

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
    manager = start_window_manager()
    unittest.addModuleCleanup(lambda: (manager.terminate(), manager.wait()))


if __name__ == "__main__":
    Atspi.init()
    unittest.main(verbosity=2)
