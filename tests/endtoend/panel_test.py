#!/usr/bin/python3
"""What a user does with the panel, from outside, with the keyboard and by a screen reader's presses: quillmate with its
service; quillmate-extension over its link; quillmate-chat. The first argument is the folder of the programs."""

import base64
import json
import os
import signal
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


def send(desk, frame):
    data = json.dumps(frame).encode()
    desk.process.stdin.write(struct.pack("=I", len(data)) + data)
    desk.process.stdin.flush()


def children(desk):
    """The processes that it has started."""
    return [int(word) for word in look("pgrep", "-P", str(desk.process.pid), "quillmate-serv").split()]


class Preview(unittest.TestCase):
    def test_a_day_with_the_panel(self):
        desk = Desk(program("quillmate"), [SAMPLE])

        def tab_to(name, most=40):
            visited = []
            for _ in range(most):
                focused = desk.focused()
                if focused and focused.get_name() == name:
                    return
                visited.append(focused.get_name()[:30] if focused else "nothing")
                keys("Tab")
                desk.settle()
            self.fail(f"Tab does not reach {name}, only {visited}")

        desk.wait_for("push button", "Login")
        tab_to("Login")
        keys("Return")
        desk.wait_for("heading", "Summary")
        tab_to("Generate response")
        keys("space")
        desk.wait_for("alert", "Response generated successfully.")
        reply = desk.wait_for("label", "Hello Helen,")
        tab_to("Copy to clipboard")
        keys("Return")
        desk.wait_for("tool tip", "Text copied to clipboard!")
        self.assertEqual(clipboard(), reply.get_name())
        desk.press("push button", "Submit to train AI")
        desk.wait_for("alert", "Success: ")
        desk.press("push button", "Regenerate response")
        desk.wait_for("alert", "Response generated successfully.")

        tab_to("Quick response")
        keys("Right")
        desk.wait_for("text", "Ask questions here")
        tab_to("Ask questions here")
        type_text("When does the delivery come?")
        keys("Return")
        desk.wait_for("list item", "18 March")
        write_into(desk.wait_for("text", "Ask questions here"), "And how many copies are there?")
        desk.press("push button", "Send")
        until(lambda: len(desk.find_all("list item", None)) == 4, "a second answer", desk.describe)

        tab_to("Log out")
        keys("Return")
        desk.press("push button", "Login")
        desk.wait_for("push button", "Generate response")  # Nothing of the first time is left.
        self.assertEqual(desk.end(), 0)


class Link(unittest.TestCase):
    def test_panel_of_a_session(self):
        desk = Desk(program("quillmate-extension"), [], {"QUILLMATE_CONNECT_TO": LIVE_HOST + "=127.0.0.1:1"})
        send(desk, {"type": "composeSessionDidBegin", "session": "s", "originalMessage": None})
        send(desk, {"type": "viewControllerForSession", "session": "s"})
        desk.wait_for("push button", "Login")
        # The user is writing: a window that no user's act brought about leaves the keyboard where it is (EWMH 1.5).
        self.assertIn("= 0\n", look("xprop", "-name", "Quillmate", "_NET_WM_USER_TIME"))
        desk.press("push button", "Login")
        until(lambda: any("Error making GET request" in line for line in desk.lines()), "the request")
        desk.wait_for("label", "The service cannot be reached. ")
        until(lambda: any('{"type":"status","serviceReachable":false,"reason":"Could not connect' in line for line in desk.lines()), "the frame")
        send(desk, {"type": "composeSessionDidEnd", "session": "s"})
        until(lambda: desk.find("push button", "Login") is None, "the panel's end")
        self.assertEqual(desk.end(), 0)


    def test_service_of_this_machine(self):
        desks = [Desk(program("quillmate-extension"), []) for _ in range(2)]
        for desk in desks:
            message = {"rawData": base64.b64encode(open(SAMPLE, "rb").read()).decode(), "subject": "x", "headers": None}
            message["fromAddress"] = {"addressString": None}
            send(desk, {"type": "composeSessionDidBegin", "session": "s", "originalMessage": message})
            send(desk, {"type": "viewControllerForSession", "session": "s"})
        for desk in desks:
            desk.press("push button", "Login")
            desk.wait_for("heading", "Summary")
            desk.wait_for("push button", "Generate response")
            # The one it has started by itself is gone, and the next wish brings another.
            [service] = children(desk)
            os.kill(service, signal.SIGKILL)
            until(lambda: service not in children(desk), "the service's end")
            desk.press("push button", "Generate response")
            desk.wait_for("alert", "Response generated successfully.")
        services = [service for desk in desks for service in children(desk)]
        self.assertEqual(len(services), 2)
        self.assertEqual([desk.end() for desk in desks], [0, 0])
        self.assertFalse([service for service in services if os.path.exists(f"/proc/{service}")])


class Chat(unittest.TestCase):
    def test_failure_is_told_and_the_question_kept(self):
        desk = Desk(program("quillmate-chat"), [], {"QUILLMATE_CONNECT_TO": LIVE_HOST + "=127.0.0.1:1"})
        write_into(desk.wait_for("text", "Ask questions here"), "Hello?")
        desk.press("push button", "Send")
        desk.wait_for("label", "Something went wrong, please try again")
        desk.wait_for("list item", "Hello?")
        self.assertEqual(desk.end(), 0)


    def test_lack_of_a_sign_in_is_told(self):
        service = Service(program("quillmate-service"), [])
        desk = Desk(program("quillmate-chat"), [], service.environment())
        write_into(desk.wait_for("text", "Ask questions here"), "Hello?")
        desk.press("push button", "Send")
        desk.wait_for("label", "The service answers only after a sign-in")
        desk.wait_for("push button", "Try again")
        self.assertEqual(desk.end(), 0)
        self.assertEqual(service.end(), 0)


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
