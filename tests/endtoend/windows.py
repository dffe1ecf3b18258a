"""The windows on the display, as the window manager knows them."""

import re
import subprocess

from desk import until


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=30, check=True).stdout


def look(*command):
    """What the command tells; nothing when the window that it is about has gone meanwhile."""
    return subprocess.run(command, capture_output=True, text=True, timeout=30).stdout


def start_window_manager():
    """Its process, which manages the windows by now."""
    manager = subprocess.Popen(["openbox"])
    until(lambda: subprocess.run(["wmctrl", "-m"], capture_output=True).returncode == 0, "the window manager")
    return manager


def windows(title):
    """The windows whose title holds the text."""
    lines = (line.split(None, 3) for line in look("wmctrl", "-l").splitlines())
    return [int(number, 16) for number, _, _, name in lines if title in name]


def window(title):
    """The first of them; None while there is none."""
    return next(iter(windows(title)), None)


def owner_of(number):
    """The window that this one belongs to."""
    told = look("xprop", "-id", str(number), "WM_TRANSIENT_FOR").rpartition("# ")[2].strip()
    return int(told, 16) if told.startswith("0x") else None


def frame_of(title):
    """Left, top, width and height of that window, with what the window manager puts around it."""
    number = window(title)
    if number is None:
        return (0, 0, 0, 0)
    told = look("xwininfo", "-id", str(number))
    numbers = [
        re.search(name + r":\s+(-?\d+)", told)
        for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
    ]
    if not all(numbers):
        return (0, 0, 0, 0)
    left, top, width, height = (int(number.group(1)) for number in numbers)
    extents = look("xprop", "-id", str(number), "_NET_FRAME_EXTENTS").partition("=")[2]
    left_side, right_side, top_side, bottom_side = (int(text) for text in extents.split(",")) if extents else (0,) * 4
    return (left - left_side, top - top_side, width + left_side + right_side, height + top_side + bottom_side)


def is_on_screen(title):
    number = window(title)
    return number is not None and "IsViewable" in look("xwininfo", "-id", str(number))


def active_window():
    """The title of the window that has the keyboard."""
    number = look("xprop", "-root", "_NET_ACTIVE_WINDOW").rpartition("#")[2].strip()
    told = look("xprop", "-id", number, "_NET_WM_NAME") if number not in ("", "0x0") else ""
    return told.partition('"')[2].rpartition('"')[0]
