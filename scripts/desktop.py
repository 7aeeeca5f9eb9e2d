"""The real program on an X display, used by real mouse and key events and over AT-SPI."""

import contextlib
import ctypes
import os
import struct
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib


def wait(condition, what, seconds=60):
    """Returns the first true value of `condition`."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        # The condition may read a control that is gone by then.
        with contextlib.suppress(GLib.Error):
            if value := condition():
                return value
        time.sleep(0.05)
    raise TimeoutError(f"no {what} within {seconds} seconds, only:{tree(Atspi.get_desktop(0))}")


def children(node):
    nodes = (node.get_child_at_index(index) for index in range(node.get_child_count()))
    return (child for child in nodes if child)


def walk(node):
    yield node
    for child in children(node):
        yield from walk(child)


def has(node, state):
    return node.get_state_set().contains(state)


def has_role(node, role):
    """Compares numbers: the name of "push button" became "button" with AT-SPI 2.54."""
    return node.get_role() == getattr(Atspi.Role, role.upper().replace(" ", "_"))


def tree(node, start="\n"):
    """A line for each control; "-" marks those on show."""
    mark = "- " if has(node, Atspi.StateType.SHOWING) else "  "
    below = (tree(child, start + "  ") for child in children(node))
    return f"{start}{mark}{node.get_role_name()} {node.get_name()!r}{''.join(below)}"


class Program:
    """A running Copy Project window; `home` is the home folder it sees."""

    def __init__(self, program, *arguments, home):
        environment = os.environ | {"HOME": str(home), "XDG_CONFIG_HOME": str(home)}
        self.process = subprocess.Popen([program, *arguments], env=environment)
        self.application = wait(self._application, "program on the accessibility bus")
        Atspi.Accessible.set_cache_mask(self.application, Atspi.Cache.NONE)
        self.wait("push button", "Copy")
        self.window = self._xdotool("search", "--sync", "--name", "Copy Project").split()[0]

    def _application(self):
        desktop = Atspi.get_desktop(0)
        # Only an event loop updates the cache.
        desktop.clear_cache()
        pid = self.process.pid
        return next((node for node in children(desktop) if node.get_process_id() == pid), None)

    def find(self, role, name=None):
        """The control on show of this role and name, or None."""
        for node in walk(self.application):
            is_alike = has_role(node, role) and name in (None, node.get_name())
            if is_alike and has(node, Atspi.StateType.SHOWING):
                return node
        return None

    def wait(self, role, name=None):
        return wait(lambda: self.find(role, name), f"{role} {name}")

    def click(self, role, name):
        box = self.wait(role, name).get_extents(Atspi.CoordType.SCREEN)
        x, y = box.x + box.width // 2, box.y + box.height // 2
        self._xdotool("mousemove", "--sync", str(x), str(y), "click", "1")

    def act(self, role, name, action="Press"):
        """Does what an assistive tool's action does."""
        node = self.wait(role, name)
        names = [Atspi.Action.get_action_name(node, i) for i in range(node.get_n_actions())]
        assert node.do_action(names.index(action))

    def key(self, name):
        # There may be no window manager to give the focus.
        self._xdotool("windowfocus", "--sync", self.window, "key", name)

    def screenshot(self, file):
        self._xdotool("windowraise", self.window)
        subprocess.run(["import", "-window", self.window, file], check=True)

    def close(self):
        """Asks the window to close as a window manager does."""
        x = ctypes.CDLL("libX11.so.6")
        x.XOpenDisplay.restype = ctypes.c_void_p
        display = ctypes.c_void_p(x.XOpenDisplay(None))
        window = int(self.window)
        protocols = x.XInternAtom(display, b"WM_PROTOCOLS", 0)
        delete = x.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
        fields = 33, 0, 1, 0, window, protocols, 32, delete, 0, 0, 0, 0
        message = struct.pack("@iLiPLLi5l", *fields).ljust(192, b"\0")
        x.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), message)
        x.XCloseDisplay(display)

    def message(self):
        """The done message, as soon as it is there."""
        dialog = self.wait("dialog", "Copy Done")
        texts = [node.get_name() for node in walk(dialog) if has_role(node, "label")]
        return max(texts, key=len)

    def status(self):
        """The exit status, once the program has ended."""
        return self.process.wait(60)

    @staticmethod
    def _xdotool(*arguments):
        return subprocess.check_output(["xdotool", *arguments], text=True)
