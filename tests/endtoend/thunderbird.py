"""Thunderbird with the add-on, on a profile and in a home of its own."""

import glob
import json
import os
import re
import shlex
import signal
import subprocess
import time

from desk import HERE, PATIENCE, Accessible, Home, until
from marionette import Marionette

ROOT = os.path.normpath(os.path.join(HERE, "..", ".."))
SAMPLES = sorted(glob.glob(ROOT + "/samples/*.eml"))

COMMON = """
const { MailServices } = ChromeUtils.importESModule("resource:///modules/MailServices.sys.mjs");
const allWindows = type => [...Services.wm.getEnumerator(type)];
const inbox = key => MailServices.accounts.getIncomingServer(key).rootFolder.getChildNamed("Inbox");
const pause = time => new Promise(resolve => Services.tm.mainThread.dispatch(
    () => { const timer = Cc["@mozilla.org/timer;1"].createInstance(Ci.nsITimer);
            timer.init(resolve, time, 0); globalThis.lastTimer = timer; }, 0));
"""

# Local folders know their messages only once their database has been built.
COMPOSE = (
    COMMON
    + """
const [kind, subject, account] = args;
const folder = inbox(account);
let header = null;
for (let tries = 0; kind !== "New" && !header && tries < 200; ++tries) {
  try {
    const all = [...folder.messages];
    header = all.find(each => [each.mime2DecodedSubject, each.messageId].includes(subject))
        ?? all.find(each => each.mime2DecodedSubject.includes(subject));
  } catch {}
  if (!header) { try { folder.updateFolder(null); } catch {} await pause(100); }
}
if (kind !== "New" && !header) { throw new Error("There is no message about " + subject); }
const before = new Set(allWindows("msgcompose"));
MailServices.compose.OpenComposeWindow(null, header, header ? folder.getUriForMsg(header) : "",
    Ci.nsIMsgCompType[kind], Ci.nsIMsgCompFormat.PlainText, MailServices.accounts.allIdentities[0], "", null);
let opened = null;
while (!opened?.gLoadingComplete) {
  await pause(20);
  opened = allWindows("msgcompose").find(each => !before.has(each));
}
return opened.docShell.outerWindowID;
"""
)


class Thunderbird(Accessible):
    """What it shows on the accessibility bus is that of the panels, not its own."""

    def __init__(self, programs, service=None, host_installed=True, mail=SAMPLES, preferences=None):
        self.home = Home()
        self.programs = programs
        self.profile = self.home.path + "/profile"
        self.shell(shlex.join(["make_profile", self.profile, programs + "/../quillmate.xpi", *mail]))
        with open(self.profile + "/user.js", "a") as user:
            for name, value in {"marionette.port": 0, **(preferences or {})}.items():
                user.write(f"user_pref({json.dumps(name)}, {json.dumps(value)});\n")
        if host_installed:
            self.install_host()
        environment = self.home.environment() | (service.environment() if service else {})
        environment |= {"HOME": self.home.path, "QUILLMATE_USER_HOME": self.home.path}
        self.log = open(self.home.path + "/log", "w+b")
        self.process = subprocess.Popen(
            ["thunderbird", "--no-remote", "--profile", self.profile, "--marionette", "--remote-allow-system-access"],
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=self.log,
            stderr=subprocess.STDOUT,
            start_new_session=True,
        )
        self.marionette = None

    def connect(self):
        self.marionette = Marionette(until(self.port, "Thunderbird's port"))

    def shell(self, command):
        subprocess.run(["bash", "-ec", ". tools/thunderbird/profile.sh; " + command], cwd=ROOT, check=True)

    def install_host(self):
        self.shell(f"make_home {shlex.quote(self.home.path)} {shlex.quote(self.programs + '/quillmate-extension')}")

    def port(self):
        self.complain()
        try:
            with open(self.profile + "/MarionetteActivePort") as file:
                return int(file.read())
        except (OSError, ValueError):
            return None

    def complain(self):
        if self.process.poll() is not None:
            raise AssertionError("Thunderbird has ended:\n" + "\n".join(self.home.lines()[-60:]))

    def is_root(self, application):
        return application.get_process_id() == self.extension()

    def extension(self):
        """The process of quillmate-extension, None while there is none."""
        found = subprocess.run(
            ["pgrep", "-f", f"^{re.escape(self.programs)}/quillmate-extension .*{self.home.path}"], capture_output=True, text=True
        ).stdout.split()
        return int(found[0]) if found else None

    def compose(self, kind, subject="", account="server1"):
        """Opens a compose window: "ReplyToSender", "ReplyAll", "ForwardInline" or "New"; gives its number.
        The message is known by a part of its subject, or by its identifier."""
        return self.marionette.run(COMPOSE, kind, subject, account)

    def with_window(self, number, script, *arguments):
        """Runs the script about that compose window, which it knows as `composing`."""
        find = 'const composing = allWindows("msgcompose").find(each => each.docShell.outerWindowID === args[0]);'
        return self.marionette.run(COMMON + find + script, number, *arguments)

    def close(self, number):
        """Closes the compose window without saving."""
        self.with_window(number, "composing.gMsgCompose.bodyModified = false; composing.gContentChanged = false; composing.close();")

    def diagnostics(self):
        """What the process has printed, as Thunderbird's Error Console shows it."""
        start = "stderr output from native app quillmate: "
        lines = self.marionette.run("return Services.console.getMessageArray().map(String);")
        return [line[len(start) :].rstrip() for line in lines if line.startswith(start)]

    def panels(self):
        """The panels' frames that are on the screen."""
        return self.find_all("frame", "Quillmate")

    def quit(self):
        """Ends it as a user does; gives its status."""
        self.marionette.command("Marionette:Quit", {"flags": ["eAttemptQuit"]})
        self.marionette.close()
        return self.process.wait(PATIENCE)

    def destroy(self):
        """Takes away whatever is left of it."""
        if self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()
        self.log.close()
        end = time.monotonic() + PATIENCE
        while self.extension() and time.monotonic() < end:
            time.sleep(0.05)
        self.home.folder.cleanup()
