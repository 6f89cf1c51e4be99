#!/usr/bin/env python3
"""Uses the explorer in a real window under a window manager, with keyboard and mouse.

explorer_window_test.py EXPLORER [FOLDER]    FOLDER keeps the screenshots
"""
import pathlib
import sqlite3
import sys
import tempfile
import unittest

from desktop import Desktop

EXPLORER = ""
PICTURES = None


def make_database(path):
    connection = sqlite3.connect(path)
    connection.execute("create table fruit(id integer primary key, name varchar(20), price real)")
    connection.executemany("insert into fruit(name, price) values(?, ?)",
                           [(f"fruit {n}", n / 4) for n in range(1, 1001)])
    connection.execute("create view dear as select name, price from fruit where price > 200")
    connection.commit()
    connection.close()


class ExplorerInARealWindow(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.database = self.folder / "market.db"
        make_database(self.database)
        self.desktop = Desktop()
        self.addCleanup(self.desktop.__exit__)
        self.explorer = self.desktop.start(
            EXPLORER, f"--config-dir={self.folder / 'config'}", str(self.database))
        self.window = self.desktop.window("market.db")
        self.wait_for_focus("market.db")

    def wait_for_focus(self, text):
        self.desktop.wait_until(lambda: text in self.desktop.focused_title(),
                                f"the focus on {text!r}")

    def look(self, name):
        if PICTURES:
            self.desktop.screenshot(PICTURES / f"{self.id().split('.')[-1]}-{name}.png")

    def end(self):
        self.desktop.keys("ctrl+q")
        self.assertEqual(self.explorer.wait(20), 0)

    def test_the_keyboard_opens_moves_and_quits(self):
        self.desktop.keys("Down", "F6", "ctrl+End", "Page_Up")
        self.look("moved")
        self.desktop.keys("ctrl+o")
        self.wait_for_focus("Open a database")
        self.desktop.keys("Escape")
        self.wait_for_focus("market.db")
        self.end()
        self.assertTrue((self.folder / "config" / "oviexplorer" / "options.dat").is_file())

    def test_a_missing_file_gives_a_box_and_the_window_stays_usable(self):
        self.desktop.keys("ctrl+o")
        self.wait_for_focus("Open a database")
        self.desktop.keys("ctrl+a")
        self.desktop.type(str(self.folder / "absent.db"))
        self.desktop.keys("Return")
        self.wait_for_focus("Error")
        self.look("box")
        self.desktop.keys("Return")
        self.desktop.wait_until(lambda: "Error" not in self.desktop.focused_title(), "the box to go")
        if "Open a database" in self.desktop.focused_title():
            self.desktop.keys("Escape")
        self.wait_for_focus("market.db")
        self.end()

    def fruits(self):
        connection = sqlite3.connect(self.database)
        try:
            return connection.execute("select count(*) from fruit").fetchone()[0]
        finally:
            connection.close()

    def is_locked(self):
        connection = sqlite3.connect(self.database, timeout=0)
        try:
            connection.execute("begin immediate")
            return False
        except sqlite3.OperationalError:
            return True
        finally:
            connection.close()

    def test_a_statement_that_is_typed_is_executed_by_key(self):
        self.desktop.keys("ctrl+e")
        self.desktop.type("insert into fruit(name) values('kiwi')")
        self.desktop.keys("F5")
        self.desktop.wait_until(lambda: self.fruits() == 1001, "the row")
        self.look("executed")
        self.desktop.keys("ctrl+a")
        self.desktop.type("begin; delete from fruit")
        self.desktop.keys("shift+F5")
        self.desktop.wait_until(self.is_locked, "the transaction")
        self.look("transaction")
        self.desktop.keys("ctrl+q")
        self.wait_for_focus("Open transaction")
        self.look("question")
        self.desktop.keys("Return")
        self.assertEqual(self.explorer.wait(20), 0)
        self.assertEqual(self.fruits(), 0)
        self.assertIn("delete from fruit",
                      (self.folder / "config" / "oviexplorer" / "sql.dat").read_text("utf-8"))

    def test_the_mouse_chooses_a_table_and_the_close_box_keeps_the_size(self):
        self.desktop.click(self.window, 60, 92)
        self.desktop.run("xdotool", "windowsize", "--sync", self.window, "700", "500")
        self.look("resized")
        self.desktop.keys("alt+F4")
        self.assertEqual(self.explorer.wait(20), 0)
        options = (self.folder / "config" / "oviexplorer" / "options.dat").read_text(encoding="utf-8")
        self.assertIn("<MainFormRect", options)


if __name__ == "__main__":
    EXPLORER = sys.argv[1]
    if len(sys.argv) > 2:
        PICTURES = pathlib.Path(sys.argv[2])
        PICTURES.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1], verbosity=2)
