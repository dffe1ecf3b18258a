#!/usr/bin/python3
"""Ordinary mail from a real server, answered in Thunderbird: what the service is given to read, and what the panel shows. The
first argument is the folder of the programs."""

import json
import os
import sys
import unittest

from desk import Atspi, until
from imap_server import ImapServer
from ordinary_mail import MAIL, message
from recording_service import RecordingService
from thunderbird import COMMON, Thunderbird
from windows import start_window_manager

PROGRAMS = os.path.realpath(sys.argv.pop(1))
ACCOUNT = "server2"

# A password of this session, and the folder as the server has it.
OPEN = (
    COMMON
    + """
MailServices.accounts.getIncomingServer(args[0]).password = "any";
for (let tries = 0; tries < 300; ++tries) {
  try {
    const folder = inbox(args[0]);
    if ([...folder.messages].length >= args[1]) { return [...folder.messages].length; }
    folder.updateFolder(null);
  } catch {
    MailServices.accounts.getIncomingServer(args[0]).performExpand(null);
  }
  await pause(100);
}
return 0;
"""
)

# Orders a reply and does not wait for its window, which Thunderbird gets ready once it has the message.
ORDER_REPLY = (
    COMMON
    + """
const [account, subject] = args;
const folder = inbox(account);
const header = [...folder.messages].find(each => each.mime2DecodedSubject === subject);
MailServices.compose.OpenComposeWindow(null, header, folder.getUriForMsg(header), Ci.nsIMsgCompType.ReplyToSender,
    Ci.nsIMsgCompFormat.PlainText, MailServices.accounts.allIdentities[0], "", null);
"""
)

# Saves what is being written as a draft, closes it, and opens the draft.
CONTINUE_LATER = """
composing.GenericSendMessage(Ci.nsIMsgCompDeliverMode.SaveAsDraft);
let folder = null;
for (let tries = 0; tries < 300 && !folder; ++tries) {
  await pause(100);
  folder = MailServices.accounts.getIncomingServer("server1").rootFolder.subFolders.find(each => each.name === "Drafts");
}
let header = null;
for (let tries = 0; tries < 300 && !header; ++tries) {
  await pause(100);
  try { header = [...folder.messages].at(-1); } catch { try { folder.updateFolder(null); } catch {} }
}
composing.gMsgCompose.bodyModified = false;
composing.gContentChanged = false;
composing.close();
const before = new Set(allWindows("msgcompose"));
MailServices.compose.OpenComposeWindow(null, header, folder.getUriForMsg(header), Ci.nsIMsgCompType.Draft,
    Ci.nsIMsgCompFormat.Default, MailServices.accounts.allIdentities[0], "", null);
let opened = null;
while (!opened?.gLoadingComplete) {
  await pause(20);
  opened = allWindows("msgcompose").find(each => !before.has(each));
}
return opened.docShell.outerWindowID;
"""

ONE = message("one draft", "References: <root@press.example>\n", "The delivery for Oslo is on Monday, 3 March.\n")
OTHER = message("one draft", "", "The delivery for Bergen is on Sunday, 9 March.\n").replace(b"<one.draft@", b"<other.draft@")


class OrdinaryMail(unittest.TestCase):
    def setUp(self):
        self.server = ImapServer([mail.source for mail in MAIL] + [ONE, OTHER])
        self.addCleanup(self.server.end)

    def start(self, service=None):
        thunderbird = Thunderbird(PROGRAMS, service, preferences=self.server.preferences())
        self.addCleanup(thunderbird.destroy)
        thunderbird.connect()
        self.assertEqual(thunderbird.marionette.run(OPEN, ACCOUNT, len(MAIL) + 2), len(MAIL) + 2, self.server.log())
        return thunderbird

    def test_what_is_read_of_each(self):
        service = RecordingService(PROGRAMS + "/quillmate-service")
        self.addCleanup(lambda: self.assertEqual(service.end(), 0))
        thunderbird = self.start(service)
        signed_in = False
        for mail in MAIL:
            with self.subTest(mail.name):
                service.asked.clear()
                number = thunderbird.compose("ReplyToSender", f"About {mail.name}", ACCOUNT)
                if not signed_in:
                    thunderbird.press("push button", "Login")
                    signed_in = True
                try:
                    self.check(mail, thunderbird)
                finally:
                    self.close(thunderbird, number)
                # By now nothing more is asked about it.
                given = [json.dumps(body, ensure_ascii=False) for path, body in service.asked if "summarize" in path]
                self.assertEqual(len(given), 0 if mail.text is None else 1)
                for text in given if not mail.of_parts else []:  # Those of parts are the service's to read.
                    self.assertIn(mail.text, text)
                    self.assertNotRegex(text, r"=[0-9A-F]{2}|[A-Za-z0-9+/]{60}")

    def check(self, mail, thunderbird):
        if mail.text is None:
            thunderbird.wait_for("text", "Email content")
        else:
            thunderbird.wait_for("heading", "Summary")
            thunderbird.wait_for("label", mail.text)

    def close(self, thunderbird, number):
        thunderbird.close(number)
        until(lambda: not thunderbird.panels(), "the panel's end")

    def test_with_nothing_set_up(self):
        thunderbird = self.start()
        for mail in (MAIL[1], MAIL[7], MAIL[15]):
            number = thunderbird.compose("ReplyToSender", f"About {mail.name}", ACCOUNT)
            if mail is MAIL[1]:
                thunderbird.press("push button", "Login")
            thunderbird.wait_for("label", mail.text)
            self.close(thunderbird, number)

        # Two messages of one subject: a reply to either finds its own again.
        for words in ("9 March", "3 March"):
            number = self.reply_to_one_of(thunderbird, words)
            thunderbird.wait_for("label", words)
            draft = thunderbird.with_window(number, CONTINUE_LATER)
            until(lambda: len(thunderbird.panels()) == 1, "the draft's panel alone")
            thunderbird.wait_for("label", words)
            self.close(thunderbird, draft)

        self.server.stop()
        thunderbird.marionette.run(ORDER_REPLY, ACCOUNT, f"About {MAIL[5].name}")
        thunderbird.wait_for("text", "Email content")

    def reply_to_one_of(self, thunderbird, words):
        """Opens the reply to the message about one draft in which these words are."""
        identifier = ("other" if words == "9 March" else "one") + ".draft@press.example"
        return thunderbird.compose("ReplyToSender", identifier, ACCOUNT)


def setUpModule():
    manager = start_window_manager()
    unittest.addModuleCleanup(lambda: (manager.terminate(), manager.wait()))


if __name__ == "__main__":
    Atspi.init()
    unittest.main(verbosity=2)
