#!/usr/bin/python3
"""Reads the explorer over the accessibility bus, as a screen reader does, and works it by that and by
the keyboard alone. Needs a session bus of its own.

accessible_test.py EXPLORER
"""
import pathlib
import sys
import tempfile
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402 (the version comes first)

from desktop import Desktop
from explorer_window_test import make_database

EXPLORER = ""
# What somebody works with, by the names of their roles.
CONTROLS = {"check box", "combo box", "list", "menu item", "page tab", "page tab list", "password text",
            "push button", "radio button", "spin button", "table", "text", "tree"}
# Inside a combo box or a spin button, which carries the name.
PARTS_OF = {"combo box", "spin button", "list", "tree", "table"}


def children(item):
    return [c for c in (item.get_child_at_index(n) for n in range(item.get_child_count())) if c]


def has_state(item, state):
    return item.get_state_set().contains(state)


def walk(item, inside=""):
    """Every item that is shown, with the role of the control that it is a part of."""
    yield item, inside
    role = item.get_role_name()
    for child in children(item):
        if role != "table" or child.get_role_name() == "table column header":
            yield from walk(child, role if role in PARTS_OF else inside)


class AccessibleExplorer(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        database = self.folder / "market.db"
        make_database(database)
        self.desktop = Desktop()
        self.addCleanup(self.desktop.__exit__)
        self.explorer = self.desktop.start(
            EXPLORER, f"--config-dir={self.folder / 'config'}", str(database),
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.desktop.window("market.db")
        self.desktop.wait_until(lambda: self.window("market.db"), "the window on the bus")
        self.desktop.wait_until(lambda: "market.db" in self.desktop.focused_title(), "the focus")

    def windows(self):
        desktop = Atspi.get_desktop(0)
        return [window for program in children(desktop) if program.get_name() == "oviexplorer"
                for window in children(program)]

    def window(self, title):
        return next((w for w in self.windows() if title in (w.get_name() or "")), None)

    def find(self, window, role, name):
        found = [i for i, _ in walk(window) if i.get_role_name() == role and i.get_name() == name]
        self.assertEqual(len(found), 1, f"{role} {name!r} in {window.get_name()!r}")
        return found[0]

    def open(self, keys, title):
        self.desktop.keys(keys)
        self.desktop.wait_until(lambda: title in self.desktop.focused_title(), f"{title!r}")
        self.desktop.wait_until(lambda: self.window(title), f"{title!r} on the bus")
        return self.window(title)

    def check_names(self, window):
        bad = []
        for item, inside in walk(window):
            role, name = item.get_role_name(), item.get_name() or ""
            if role in CONTROLS and not inside and not name.strip():
                bad.append(f"a {role} without a name")
            if "&" in name:
                bad.append(f"{role} {name!r} with the mark of its mnemonic")
            if has_state(item, Atspi.StateType.FOCUSABLE) and not inside and role == "unknown":
                bad.append(f"{name!r} without a role")
        self.assertEqual(bad, [], window.get_name())

    def focused(self, window):
        """The controls that say they have the focus: one, and the current tab of a tab control, which
        always says so. A part of a control speaks for it."""
        return {f"{inside or item.get_role_name()} {item.get_name()}"
                for item, inside in walk(window) if has_state(item, Atspi.StateType.FOCUSED)}

    def check_tab(self, window):
        """Tab reaches everything that can have the focus, and comes back to where it began."""
        wanted = {f"{i.get_role_name()} {i.get_name()}" for i, inside in walk(window)
                  if not inside and i.get_role_name() in CONTROLS - {"menu item", "page tab"}
                  and has_state(i, Atspi.StateType.FOCUSABLE)
                  and has_state(i, Atspi.StateType.SHOWING)
                  and has_state(i, Atspi.StateType.SENSITIVE)}
        reached = set()
        for _ in range(3 * len(wanted) + 3):
            reached |= self.focused(window)
            self.desktop.keys("Tab")
        missing = {w for w in wanted if not any(w.split(" ", 1)[1] in r for r in reached)}
        self.assertEqual(missing, set(), f"{window.get_name()}: reached {reached}")

    def test_the_main_window_tells_its_parts_and_the_cells(self):
        window = self.window("market.db")
        self.assertEqual(window.get_role_name(), "frame")
        self.check_names(window)
        rows = self.find(window, "table", "Rows of fruit")
        table = rows.get_table_iface()
        self.assertEqual(table.get_n_columns(), 3)
        self.assertEqual(table.get_column_description(1), "name")
        cell = table.get_accessible_at(0, 1)
        self.assertEqual(cell.get_name(), "fruit 1")
        self.assertEqual(cell.get_description(), "")  # there is no reason why it cannot be edited
        self.assertTrue(has_state(cell, Atspi.StateType.EDITABLE))

    def test_every_dialog_names_its_controls_and_tab_reaches_them(self):
        for keys, title in (("ctrl+o", "Open a database"), ("ctrl+shift+o", "Connect"),
                            ("ctrl+comma", "Settings"), ("ctrl+g", "Go to row")):
            with self.subTest(title):
                window = self.open(keys, title)
                try:
                    self.assertEqual(window.get_role_name(), "dialog")
                    self.check_names(window)
                    self.check_tab(window)
                finally:
                    self.desktop.keys("Escape")
                    self.desktop.wait_until(lambda: "market.db" in self.desktop.focused_title(),
                                            "the main window")

    def test_a_button_is_pressed_over_the_bus(self):
        window = self.open("ctrl+o", "Open a database")
        button = self.find(window, "push button", "Cancel")
        actions = [button.get_action_name(n) for n in range(button.get_n_actions())]
        button.do_action(actions.index("Press"))
        self.desktop.wait_until(lambda: "market.db" in self.desktop.focused_title(), "the main window")


if __name__ == "__main__":
    EXPLORER = sys.argv[1]
    Atspi.init()
    unittest.main(argv=sys.argv[:1], verbosity=2)
