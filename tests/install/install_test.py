#!/usr/bin/env python3
"""Installs a build into a scratch folder, moves it, and uses it as a stranger would: through
find_package, with the two listings of the README as the program.

install_test.py --cmake CMAKE --build FOLDER --source FOLDER --compiler CXX --version V [--sanitize S]
"""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from desktop import Desktop

ARGUMENTS = None


def run(*command, **environment):
    done = subprocess.run([str(word) for word in command], env={**os.environ, **environment},
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        raise AssertionError(f"{command} gave {done.returncode}:\n{done.stdout}")
    return done.stdout


def listing(language):
    """The first listing of the README in that language."""
    readme = pathlib.Path(ARGUMENTS.source, "README.md").read_text(encoding="utf-8")
    return re.search(rf"^```{language}\n(.*?)^```", readme, re.DOTALL | re.MULTILINE).group(1)


def sanitizer_flags():
    return [f"-fsanitize={ARGUMENTS.sanitize}"] if ARGUMENTS.sanitize else []


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        run(ARGUMENTS.cmake, "--install", ARGUMENTS.build, "--prefix", cls.folder / "first")
        # Nothing that is installed may remember where that was.
        cls.prefix = cls.folder / "moved"
        shutil.move(cls.folder / "first", cls.prefix)

    def dynamic(self, file, tag):
        lines = run("readelf", "-d", "-W", file).splitlines()
        return [re.search(r"\[(.*)\]", line).group(1) for line in lines if f"({tag})" in line]

    def headers(self):
        root = self.prefix / "include" / "oviext"
        return sorted(str(path.relative_to(root)) for path in root.rglob("*.h"))

    def test_the_libraries_have_a_soname_and_a_version(self):
        for name in ("liboviapi.so", "liboviext.so"):
            file = self.prefix / "lib" / name
            self.assertEqual(self.dynamic(file, "SONAME"), [f"{name}.0"])
            self.assertEqual(os.readlink(file), f"{name}.0")
            self.assertEqual(os.readlink(f"{file}.0"), f"{name}.{ARGUMENTS.version}")

    def test_nothing_names_the_folder_of_the_build(self):
        for name in ("lib/liboviapi.so", "lib/liboviext.so", "libexec/oviext/oviexplorer"):
            for path in self.dynamic(self.prefix / name, "RUNPATH"):
                for part in path.split(":"):
                    self.assertTrue(part.startswith("$ORIGIN"), f"{name} looks in {part}")
        for file in (self.prefix / "lib" / "cmake" / "oviext").iterdir():
            self.assertNotIn(str(pathlib.Path(ARGUMENTS.build)), file.read_text(encoding="utf-8"))

    def test_the_headers_stand_by_folder_and_internal_ones_stay_away(self):
        headers = self.headers()
        for name in ("oviapi/form.h", "dorcpp/cursor.h", "xmlutils/element.h", "app/extapp.h",
                     "data/dordataset.h"):
            self.assertIn(name, headers)
        for name in ("dorcpp/driver.h", "oviapi/liveobjects.h", "xmlutils/document.h"):
            self.assertNotIn(name, headers)
        self.assertEqual([name for name in headers if name.count("/") != 1], [])

    def test_the_headers_need_nothing_that_is_not_installed(self):
        unit = self.folder / "headers.cpp"
        unit.write_text("".join(f"#include <{name}>\n" for name in self.headers()))
        run(ARGUMENTS.compiler, "-std=c++20", "-fsyntax-only",
            "-I", self.prefix / "include" / "oviext", unit)

    def test_the_program_of_the_readme_runs(self):
        source = self.folder / "hello"
        source.mkdir()
        (source / "hello.cpp").write_text(listing("cpp"), encoding="utf-8")
        (source / "CMakeLists.txt").write_text(listing("cmake"), encoding="utf-8")
        flags = " ".join(sanitizer_flags())
        run(ARGUMENTS.cmake, "-S", source, "-B", source / "build", "-G", "Ninja",
            f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_COMPILER={ARGUMENTS.compiler}",
            f"-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror {flags}")
        run(ARGUMENTS.cmake, "--build", source / "build")
        with Desktop() as desktop:
            program = desktop.start(source / "build" / "hello", XDG_CONFIG_HOME=str(self.folder))
            desktop.window("Hello")
            desktop.wait_until(lambda: "Hello" in desktop.focused_title(), "the focus")
            desktop.keys("alt+F4")
            self.assertEqual(program.wait(20), 0, program.stdout.read())
        self.assertTrue((self.folder / "hello" / "options.dat").is_file())

    def test_the_explorer_runs_from_its_link(self):
        pictures = self.folder / "pictures"
        run(self.prefix / "bin" / "oviexplorer", f"--tour={pictures}", QT_QPA_PLATFORM="offscreen",
            XDG_DATA_HOME=str(self.folder / "data"), XDG_CONFIG_HOME=str(self.folder / "config"))
        self.assertGreater(len(list(pictures.glob("*.png"))), 3)

    def test_the_desktop_finds_the_explorer(self):
        entry = (self.prefix / "share/applications/oviexplorer.desktop").read_text(encoding="utf-8")
        self.assertIn("\nExec=oviexplorer ", entry)
        self.assertIn("\nIcon=oviexplorer\n", entry)
        icons = self.prefix / "share" / "icons" / "hicolor"
        for size in (16, 32, 64, 128):
            icon = (icons / f"{size}x{size}" / "apps" / "oviexplorer.png").read_bytes()
            self.assertEqual(int.from_bytes(icon[16:20], "big"), size)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in ("cmake", "build", "source", "compiler", "version"):
        parser.add_argument(f"--{option}", required=True)
    parser.add_argument("--sanitize", default="")
    ARGUMENTS = parser.parse_args()
    unittest.main(argv=sys.argv[:1], verbosity=2)
