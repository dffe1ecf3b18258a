"""The windows on the display, as the window manager knows them."""

import re
import subprocess


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=30, check=True).stdout


def window(title):
    """The window whose title holds the text; None while there is none."""
    for line in run("wmctrl", "-l").splitlines():
        number, _, _, name = line.split(None, 3)
        if title in name:
            return int(number, 16)
    return None


def frame_of(title):
    """Left, top, width and height of that window, with what the window manager puts around it."""
    number = window(title)
    if number is None:
        return (0, 0, 0, 0)
    told = run("xwininfo", "-id", str(number))
    left, top, width, height = (
        int(re.search(name + r":\s+(-?\d+)", told).group(1))
        for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
    )
    extents = run("xprop", "-id", str(number), "_NET_FRAME_EXTENTS").partition("=")[2]
    left_side, right_side, top_side, bottom_side = (int(text) for text in extents.split(",")) if extents else (0,) * 4
    return (left - left_side, top - top_side, width + left_side + right_side, height + top_side + bottom_side)


def is_on_screen(title):
    number = window(title)
    return number is not None and "IsViewable" in run("xwininfo", "-id", str(number))


def active_window():
    """The title of the window that has the keyboard."""
    number = run("xprop", "-root", "_NET_ACTIVE_WINDOW").rpartition("#")[2].strip()
    told = run("xprop", "-id", number, "_NET_WM_NAME") if number not in ("", "0x0") else ""
    return told.partition('"')[2].rpartition('"')[0]
