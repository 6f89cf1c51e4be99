#!/usr/bin/env python3
"""Runs a test program in real windows, with an X server and a window manager of its own.

in_window.py PROGRAM [ARGUMENT...]
"""
import subprocess
import sys

from desktop import Desktop

with Desktop() as desktop:
    sys.exit(subprocess.run(sys.argv[1:], env=desktop.environment, timeout=220).returncode)
