"""A desktop for tests: an X server without a screen and a window manager, driven by real events."""
import contextlib
import os
import subprocess
import time

SCREEN = "1280x900x24"
TIMEOUT = 20.0


class Desktop:
    """Starts the server and the window manager; a program started before the manager is ready might
    never get the focus, so this waits for it."""

    def __init__(self):
        self._stack = contextlib.ExitStack()
        read_end, write_end = os.pipe()
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", SCREEN, "-nolisten", "tcp"],
            pass_fds=[write_end], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._stack.callback(self._end, server)
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            self.display = ":" + pipe.readline().strip()
        self.environment = {**os.environ, "DISPLAY": self.display, "QT_QPA_PLATFORM": "xcb",
                            "QT_NO_XDG_DESKTOP_PORTAL": "1"}
        # Without a bus the client library would try to start one, and leaks what that takes.
        self.environment.setdefault("DBUS_SESSION_BUS_ADDRESS", "disabled:")
        # The locale of a test is for the programs that it starts, not for its tools.
        self._tools = {**self.environment, "LC_ALL": "C.UTF-8"}
        manager = subprocess.Popen(["openbox"], env=self._tools, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        self._stack.callback(self._end, manager)
        self.wait_until(lambda: "window id" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"),
                        "the window manager")

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self._stack.close()

    @staticmethod
    def _end(process):
        process.terminate()
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        if process.stdout:
            process.stdout.close()

    @staticmethod
    def wait_until(condition, what):
        end = time.monotonic() + TIMEOUT
        while time.monotonic() < end:
            if condition():
                return
            time.sleep(0.05)
        raise AssertionError(f"waited {TIMEOUT:.0f} s for {what}")

    def run(self, *command):
        return subprocess.run(command, env=self._tools, capture_output=True, encoding="utf-8",
                              timeout=TIMEOUT).stdout

    def start(self, *command, **environment):
        process = subprocess.Popen(command, env={**self.environment, **environment},
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self._stack.callback(self._end, process)
        return process

    def windows(self):
        """Titles of the visible windows by their identifiers."""
        titles = {}
        for window in self.run("xdotool", "search", "--onlyvisible", "--name", "").split():
            title = self.run("xdotool", "getwindowname", window).strip()
            if title:
                titles[window] = title
        return titles

    def window(self, text):
        """Waits for a window whose title holds the text and returns its identifier."""
        found = []

        def look():
            found[:] = [w for w, title in self.windows().items() if text in title]
            return bool(found)
        self.wait_until(look, f"a window titled {text!r}")
        return found[0]

    def focused_title(self):
        return self.run("xdotool", "getactivewindow", "getwindowname").strip()

    def keys(self, *names):
        self.run("xdotool", "key", "--delay", "30", *names)

    def type(self, text):
        self.run("xdotool", "type", "--delay", "15", text)

    def click(self, window, x, y, button=1):
        self.run("xdotool", "mousemove", "--sync", "--window", window, str(x), str(y))
        self.run("xdotool", "click", str(button))

    def screenshot(self, path):
        self.run("import", "-window", "root", str(path))
