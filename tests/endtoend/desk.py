"""A program under test as a user of the desktop meets it: by keyboard, and over the accessibility bus."""

import os
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

from local_service import PATIENCE  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))


def until(condition, what, there_is=None):
    """The condition's first true value; an error when there is none in good time."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.05)
    raise AssertionError("In vain: " + what + ("; there is:\n" + there_is() if there_is else ""))


def walk(node):
    """The node and everything below it, in order; what goes away meanwhile is left out."""
    try:
        yield node
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                yield from walk(child)
    except gi.repository.GLib.Error:
        return


class Accessible:
    """What the accessibility bus shows of a program."""

    def is_root(self, application):
        """Whether that is the program."""
        raise NotImplementedError

    def complain(self):
        """Raises an error when there is no use in waiting any longer."""

    def root(self):
        """What the bus knows of the program."""
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            if application is not None and self.is_root(application):
                return application
        return None

    def find_all(self, role, name):
        """The visible nodes of that role and name."""
        self.complain()
        root = self.root()
        found = []
        for node in walk(root) if root else ():
            try:
                if node.get_role_name() == role and (name is None or name in node.get_name()):
                    if node.get_state_set().contains(Atspi.StateType.SHOWING):
                        found.append(node)
            except gi.repository.GLib.Error:
                continue
        return found

    def find(self, role, name):
        """The first of them, or None."""
        return next(iter(self.find_all(role, name)), None)

    def wait_for(self, role, name):
        return until(lambda: self.find(role, name), f"{role} “{name}”", self.describe)

    def press(self, role, name):
        """Presses it as a screen reader does."""
        node = self.wait_for(role, name)
        names = [Atspi.Action.get_action_name(node, index) for index in range(Atspi.Action.get_n_actions(node))]
        Atspi.Action.do_action(node, names.index("Press"))

    def focused(self):
        """The node that has the keyboard; None while no control has it."""
        root = self.root()
        for node in walk(root) if root else ():
            try:
                states = node.get_state_set()
                if states.contains(Atspi.StateType.FOCUSED) and states.contains(Atspi.StateType.SHOWING):
                    if node.get_role_name() not in ("frame", "application", "panel", "page tab list"):
                        return node
            except gi.repository.GLib.Error:
                continue
        return None

    @staticmethod
    def settle():
        """Lets a key arrive and what it does come to an end."""
        time.sleep(0.1)

    def describe(self):
        root = self.root()
        return "\n".join(f"  {node.get_role_name()}: {node.get_name()[:80]}" for node in walk(root)) if root else ""


class Home:
    """A home of its own for a program, with the desktop's way to a browser that signs in."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = self.folder.name
        os.mkdir(self.path + "/bin")
        os.symlink(os.path.join(HERE, "browser"), self.path + "/bin/xdg-open")

    def environment(self):
        return dict(
            os.environ,
            QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            XDG_DATA_HOME=self.path + "/data",
            XDG_CACHE_HOME=self.path + "/cache",
            XDG_CONFIG_HOME=self.path + "/config",
            PATH=self.path + "/bin:" + os.environ["PATH"],
        )

    def lines(self):
        with open(self.path + "/log", errors="replace") as log:
            return log.read().splitlines()

    def pages(self):
        """What was handed to the browser."""
        path = self.path + "/bin/pages"
        return open(path).read().splitlines() if os.path.exists(path) else []

    def moments(self):
        """When each sign-in page was there and its form had been taken, in turn, by the system's monotonic clock."""
        path = self.path + "/bin/moments"
        return [float(line) for line in open(path)] if os.path.exists(path) else []


class Desk(Accessible):
    """One program in a home of its own."""

    def __init__(self, program, arguments, environment=None):
        self.home = Home()
        self.log = open(self.home.path + "/log", "w+b")
        self.process = subprocess.Popen(
            [program, *arguments],
            env=self.home.environment() | (environment or {}),
            stdin=subprocess.PIPE,
            stdout=self.log,
            stderr=subprocess.STDOUT,
        )

    def end(self):
        """Ends it in order and gives its status."""
        self.process.terminate()
        status = self.process.wait(PATIENCE)
        if status != 0:
            print("\n".join(self.lines()[-60:]))
        self.process.stdin.close()
        self.log.close()
        self.home.folder.cleanup()
        return status

    def lines(self):
        return self.home.lines()

    def pages(self):
        return self.home.pages()

    def is_root(self, application):
        return application.get_process_id() == self.process.pid

    def complain(self):
        if self.process.poll() is not None:
            raise AssertionError("The program has ended:\n" + "\n".join(self.lines()))


def write_into(field, text):
    Atspi.Component.grab_focus(field)
    until(lambda: field.get_state_set().contains(Atspi.StateType.FOCUSED), "the focus on " + field.get_name())
    type_text(text)


def keys(*names):
    """Types on the keyboard, into whichever window has it."""
    subprocess.run(["xdotool", "key", "--delay", "20", *names], check=True)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "20", text], check=True)
