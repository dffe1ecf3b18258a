#!/usr/bin/python3
"""What a user does with the panel, from outside: quillmate with its service, by a screen reader's presses and again by
the keyboard alone; quillmate-extension over its link; quillmate-chat. The first argument is the folder of the programs."""

import base64
import json
import os
import struct
import subprocess
import sys
import unittest

from desk import Atspi, Desk, keys, type_text, until, write_into
from local_service import LIVE_HOST, Service
from windows import look

PROGRAMS = sys.argv.pop(1)
SAMPLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "samples", "plain.eml")


def program(name):
    return os.path.join(PROGRAMS, name)


def clipboard():
    return subprocess.run(["xclip", "-o", "-selection", "clipboard"], capture_output=True, timeout=10).stdout.decode()


class Preview(unittest.TestCase):
    def setUp(self):
        self.desk = Desk(program("quillmate"), [SAMPLE])

    def tearDown(self):
        self.assertEqual(self.desk.end(), 0)

    def press(self, name, role="push button"):
        self.desk.press(role, name)

    def sees(self, role, name=None):
        return self.desk.wait_for(role, name)

    def answer_after(self, text, count):
        """Sends a question and gives the texts of the conversation once there are that many."""
        write_into(self.sees("text", "Ask questions here"), text)
        self.press("Send")

        def conversation():
            rows = self.sees("list", "Conversation")
            texts = [rows.get_child_at_index(i).get_name() for i in range(rows.get_child_count())]
            return texts if len([t for t in texts if t]) >= count else None

        return until(conversation, "an answer to " + text)

    def test_by_a_screen_reader(self):
        self.press("Login")
        self.sees("heading", "Summary")
        self.press("Generate response")
        self.sees("alert", "Response generated successfully.")
        reply = self.sees("label", "Hello Helen,")
        self.press("Copy to clipboard")
        self.sees("tool tip", "Text copied to clipboard!")
        self.assertEqual(clipboard(), reply.get_name())
        self.press("Submit to train AI")
        self.sees("alert", "Success: ")
        self.press("Regenerate response")
        self.sees("alert", "Response generated successfully.")
        self.press("Custom interactive response", "page tab")
        self.assertIn("18 March", " ".join(self.answer_after("When does the delivery come?", 2)))
        self.answer_after("And how many copies are there?", 4)
        self.press("Log out")
        self.sees("push button", "Login")
        self.assertIsNone(self.desk.find("push button", "Log out"))
        self.press("Login")
        self.sees("push button", "Generate response")  # Nothing of the first time is left.

    def test_by_the_keyboard_alone(self):
        def tab_to(name, most=40):
            visited = []
            for _ in range(most):
                focused = self.desk.focused()
                if focused and focused.get_name() == name:
                    return
                visited.append(focused.get_name()[:30] if focused else "nothing")
                keys("Tab")
                self.desk.settle()
            self.fail(f"Tab does not reach {name}, only {visited}")

        self.sees("push button", "Login")
        tab_to("Login")
        keys("Return")
        self.sees("push button", "Generate response")
        tab_to("Generate response")
        keys("space")
        self.sees("push button", "Copy to clipboard")
        tab_to("Copy to clipboard")
        keys("Return")
        self.sees("tool tip", "Text copied to clipboard!")
        tab_to("Quick response")
        keys("Right")
        self.sees("text", "Ask questions here")
        tab_to("Ask questions here")
        type_text("When does the delivery come?")
        keys("Return")
        until(lambda: self.desk.find("list item", "18 March"), "an answer")
        tab_to("Conversation")
        keys("ctrl+c")
        until(lambda: "18 March" in clipboard(), "the answer on the clipboard")
        keys("ctrl+shift+d")
        self.sees("radio button", "Staging")
        keys("ctrl+shift+d")
        tab_to("Log out")
        keys("Return")
        self.sees("push button", "Login")


class Link(unittest.TestCase):
    def test_panel_of_a_session(self):
        desk = Desk(program("quillmate-extension"), [], {"QUILLMATE_CONNECT_TO": LIVE_HOST + "=127.0.0.1:1"})

        def send(frame):
            data = json.dumps(frame).encode()
            desk.process.stdin.write(struct.pack("=I", len(data)) + data)
            desk.process.stdin.flush()

        raw = base64.b64encode(b"Subject: Plans\n\nThe content").decode()
        message = {"rawData": raw, "subject": "Plans", "fromAddress": {"addressString": None}, "headers": None}
        send({"type": "composeSessionDidBegin", "session": "s", "originalMessage": message})
        send({"type": "viewControllerForSession", "session": "s"})
        desk.wait_for("push button", "Login")
        # The user is writing: a window that no user's act brought about leaves the keyboard where it is (EWMH 1.5).
        self.assertIn("= 0\n", look("xprop", "-name", "Quillmate", "_NET_WM_USER_TIME"))
        desk.press("push button", "Login")
        until(lambda: any("Error making GET request" in line for line in desk.lines()), "the request")
        send({"type": "composeSessionDidEnd", "session": "s"})
        until(lambda: desk.find("push button", "Login") is None, "the panel's end")
        self.assertEqual(desk.end(), 0)


class Chat(unittest.TestCase):
    def test_failure_is_told_and_the_question_kept(self):
        desk = Desk(program("quillmate-chat"), [], {"QUILLMATE_CONNECT_TO": LIVE_HOST + "=127.0.0.1:1"})
        write_into(desk.wait_for("text", "Ask questions here"), "Hello?")
        desk.press("push button", "Send")
        desk.wait_for("label", "Something went wrong, please try again")
        desk.wait_for("list item", "Hello?")
        self.assertEqual(desk.end(), 0)


class Update(unittest.TestCase):
    def test_notice(self):
        page = "https://quillmate.example/download"
        service = Service(program("quillmate-service"), ["--update-version", "9.0.0", "--update-url", page])
        desk = Desk(program("quillmate"), ["--service", "remote", SAMPLE], service.environment())
        desk.press("push button", "Login")
        desk.wait_for("heading", "New version available!")
        desk.press("push button", "Update now")
        until(lambda: page in desk.pages(), "the page")
        desk.press("push button", "Remind me later")
        desk.press("push button", "Generate response")
        desk.wait_for("alert", "Response generated successfully.")
        self.assertEqual(desk.end(), 0)
        self.assertEqual(service.end(), 0)


if __name__ == "__main__":
    Atspi.init()
    unittest.main(verbosity=2)
