#!/usr/bin/env python3
"""Gates on the structure of the tree. Each exits 0 when it holds and 1 with one line a violation.

  layering.py includes DEPS SOURCE        folder order and foreign headers, from `ninja -t deps`
  layering.py needed LIBRARY NAME...      the shared libraries that LIBRARY may need, and no other
  layering.py soname LIBRARY NAME         the name by which programs will ask for LIBRARY
  layering.py exports LIBRARY             exported symbols belong to the library's own interface
  layering.py headers SOURCE COMPILER     every public header compiles alone, without a toolkit
  layering.py trap SOURCE COMPILER        a stray toolkit or engine include is an error
  layering.py undefined COMPILER FLAGS    the link flags refuse an undefined symbol
"""
import concurrent.futures
import pathlib
import re
import subprocess
import sys
import tempfile

# What a folder may include beside itself, the platform's public headers and the system's.
ORDER = {
    "app": set(),
    "data": {"app"},
    "grids": {"app", "data"},
    "trend": {"app", "data"},
    "panels": {"app"},
    "explorer": {"app", "data", "grids", "trend", "panels"},
}
# Foreign headers by the one folder that may include them.
FOREIGN = {
    "platform/oviapi/qt": re.compile(r"/qt6/|/Qt[A-Z][A-Za-z]*/|/q[a-z]+\.h$"),
    "platform/dorcpp/sqlite": re.compile(r"/sqlite3(ext)?\.h$"),
    "platform/dorcpp/postgresql": re.compile(r"/libpq-fe\.h$|/postgresql/"),
    "platform/xmlutils/expat": re.compile(r"/expat(_config|_external)?\.h$"),
}
BACKENDS = tuple(FOREIGN)
RUNTIME = re.compile(r"lib(stdc\+\+|m|c|gcc_s|asan|ubsan|tsan|gcov)\.so\.\d+|ld-linux.*")
TRAPS = {
    "QWidget": "Qt",
    "sqlite3.h": "sqlite3.h",
    "libpq-fe.h": "libpq-fe.h",
    "expat.h": "expat.h",
}


def parse_deps(text):
    """Yields (object, [dependency, ...]) from the output of `ninja -t deps`."""
    name, deps = None, []
    for line in text.splitlines():
        if line.startswith(" "):
            deps.append(line.strip())
        elif ": #deps" in line:
            if name:
                yield name, deps
            name, deps = line.split(": #deps")[0], []
    if name:
        yield name, deps


def folder_of(path):
    """The folder of the tree that a path relative to its root belongs to: platform/x/y, or x."""
    parts = pathlib.PurePosixPath(path).parts
    if not parts or parts[0] != "platform":
        return parts[0] if parts else ""
    return "/".join(parts[:3]) if len(parts) > 3 else "/".join(parts[:2])


def check_includes(deps_text, source):
    source = source.rstrip("/") + "/"
    for _, deps in parse_deps(deps_text):
        if not deps or not deps[0].startswith(source):
            continue
        unit = deps[0][len(source):]
        unit_folder = folder_of(unit)
        if unit_folder.split("/")[0] not in (*ORDER, "platform"):
            continue
        for dep in deps[1:]:
            if dep.startswith(source):
                other = folder_of(dep[len(source):])
                if other in BACKENDS and other != unit_folder:
                    yield f"{unit} reaches the backend header {dep[len(source):]}"
                allowed = ORDER.get(unit_folder)
                if other in ORDER and other != unit_folder and other not in (allowed or ()):
                    yield f"{unit} includes {dep[len(source):]}, against the order of folders"
                continue
            for home, pattern in FOREIGN.items():
                if unit_folder != home and pattern.search(dep):
                    yield f"{unit} reaches the foreign header {dep}"


def check_needed(library, allowed):
    out = subprocess.run(["readelf", "-d", library], check=True, capture_output=True, text=True)
    needed = re.findall(r"\(NEEDED\).*\[(.+?)\]", out.stdout)
    if not needed:
        yield f"{library} needs nothing at all: not a shared library of ours"
    for name in needed:
        if name not in allowed and not RUNTIME.fullmatch(name):
            yield f"{library} needs {name}"


def check_soname(library, expected):
    out = subprocess.run(["readelf", "-d", library], check=True, capture_output=True, text=True)
    names = re.findall(r"\(SONAME\).*\[(.+?)\]", out.stdout)
    if names != [expected]:
        yield f"{library} calls itself {' '.join(names) or 'nothing'}, not {expected}"


def check_exports(library):
    out = subprocess.run(["nm", "-D", "--defined-only", "-C", library], check=True,
                         capture_output=True, text=True)
    symbols = [line.split(None, 2)[2] for line in out.stdout.splitlines() if line.count(" ") >= 2]
    if not symbols:
        yield f"{library} exports nothing"
    for symbol in symbols:
        name = symbol.split("(")[0]
        native = "Native::" in name or (" for " in symbol and "Native" in symbol)
        if native or re.search(r"^\(anonymous|\bQ[A-Z][a-z]|sqlite3_|\bXML_[A-Z]", name):
            yield f"{library} exports {symbol}"


def public_headers(source):
    root = pathlib.Path(source)
    for folder in ("platform/oviapi", "platform/dorcpp", "platform/xmlutils", *ORDER):
        if folder != "explorer":
            yield from sorted((root / folder).glob("*.h"))


def check_headers(source, compiler, headers=None):
    command = [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
               "-I", source, "-I", f"{source}/platform"]
    for kind in ("qt", "sqlite", "postgresql", "expat"):
        command += ["-I", f"{source}/cmake/traps/{kind}"]

    def compile_alone(header):
        text = f'#include "{header}"\n#include "{header}"\nint main() {{}}\n'
        run = subprocess.run([*command, "-x", "c++", "-"], input=text, capture_output=True,
                             text=True)
        return None if run.returncode == 0 else f"{header} does not compile alone:\n{run.stderr}"

    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        names = [str(h) for h in (headers or public_headers(source))]
        if not names:
            yield "no public header was found"
        yield from (fault for fault in pool.map(compile_alone, names) if fault)


def check_trap(source, compiler):
    for header, word in TRAPS.items():
        flags = [f"-I{path}" for path in sorted(pathlib.Path(source, "cmake/traps").iterdir())]
        run = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", *flags, "-x", "c++", "-"],
                             input=f"#include <{header}>\n", capture_output=True, text=True)
        if run.returncode == 0 or word not in run.stderr or "may be included" not in run.stderr:
            yield f"an include of {header} is not caught: {run.stderr}"


def check_undefined(compiler, flags):
    with tempfile.TemporaryDirectory() as folder:
        unit = pathlib.Path(folder, "unit.cpp")
        unit.write_text("int missing();\nint caller() { return missing(); }\n")
        run = subprocess.run([compiler, "-shared", "-fPIC", str(unit), "-o", f"{folder}/x.so",
                              *flags], capture_output=True, text=True)
        if run.returncode == 0:
            yield "a shared library with an undefined symbol was linked"


def main(arguments):
    command, rest = arguments[0], arguments[1:]
    if command == "includes":
        faults = check_includes(pathlib.Path(rest[0]).read_text(), rest[1])
    elif command == "needed":
        faults = check_needed(rest[0], set(rest[1:]))
    elif command == "soname":
        faults = check_soname(rest[0], rest[1])
    elif command == "exports":
        faults = check_exports(rest[0])
    elif command == "headers":
        faults = check_headers(rest[0], rest[1], rest[2:])
    elif command == "trap":
        faults = check_trap(rest[0], rest[1])
    elif command == "undefined":
        faults = check_undefined(rest[0], rest[1:])
    else:
        sys.exit(__doc__)
    faults = list(faults)
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
