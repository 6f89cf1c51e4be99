#!/usr/bin/env python3
"""A private PostgreSQL server for the tests.

pgcluster.py start STATE     makes a cluster in a temporary folder and starts it
pgcluster.py plain STATE     the same without TLS
pgcluster.py measure STATE   without TLS, with memory for the tables of the benchmarks, and with one
                             process for each statement
pgcluster.py restart STATE   ends the server as an administrator does, and starts it again
pgcluster.py stop STATE      ends the server and removes everything

The server listens on 127.0.0.1 and 127.0.0.2, where the one user needs a password, and on a socket
folder, where everybody is trusted. Its certificate names localhost and 127.0.0.2, and is its own
authority. STATE is a file of name=value lines that tells the tests where it is.
"""
import glob
import os
import pwd
import re
import secrets
import shutil
import socket
import subprocess
import sys
import tempfile

USER = "tester"
DATABASE = "testdata"
SETTINGS = """
listen_addresses = '127.0.0.1, 127.0.0.2'
unix_socket_directories = '{folder}'
port = {port}
max_connections = 60
shared_buffers = 32MB
fsync = off
synchronous_commit = off
full_page_writes = off
autovacuum = off
log_min_messages = fatal
"""
MEASURING = """
shared_buffers = 512MB
max_wal_size = 4GB
synchronous_commit = on
max_parallel_workers_per_gather = 0
jit = off
"""


def programs():
    """The folder of the newest server's programs."""
    found = glob.glob("/usr/lib/postgresql/*/bin/initdb")
    if not found:
        on_path = shutil.which("initdb")
        found = [os.path.realpath(on_path)] if on_path else []
    if not found:
        sys.exit("There is no PostgreSQL server here: install the package postgresql.")
    version = lambda path: [int(n) for n in re.findall(r"\d+", path)]
    return os.path.dirname(max(found, key=version))


def run(*command):
    """Runs a program of the server, which refuses to be run by root."""
    if os.geteuid() == 0:
        command = ("setpriv", "--reuid=postgres", "--regid=postgres", "--init-groups", *command)
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, cwd="/", text=True, check=False)
    return done.returncode == 0, done.stdout


def control(folder, *arguments):
    # The server inherits no pipe of this program's, so its log is a file.
    return run(programs() + "/pg_ctl", "-D", folder + "/data", "-l", folder + "/log", "-w",
               "-t", "60", "-s", *arguments)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def write(path, text, mode="w"):
    with open(path, mode, encoding="ascii") as file:
        file.write(text)


def read_state(path):
    try:
        with open(path, encoding="ascii") as file:
            return dict(line.rstrip("\n").split("=", 1) for line in file)
    except FileNotFoundError:
        return None


def certify(folder):
    """A key and a certificate, for a server that stands on this machine."""
    openssl = shutil.which("openssl")
    if not openssl:
        return False, "There is no openssl."
    return run(openssl, "req", "-new", "-x509", "-days", "30", "-nodes", "-newkey", "ec", "-pkeyopt",
               "ec_paramgen_curve:prime256v1", "-subj", "/CN=localhost",
               "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.2",
               "-keyout", folder + "/data/server.key", "-out", folder + "/data/server.crt")


def plain(path):
    start(path, False)


def measure(path):
    start(path, False, MEASURING)


def start(path, tls=True, more=""):
    stop(path)
    folder = tempfile.mkdtemp(prefix="ovi_pg_")
    password = secrets.token_hex(12)
    write(folder + "/password", password + "\n")
    if os.geteuid() == 0:
        owner = pwd.getpwnam("postgres")
        for name in (folder, folder + "/password"):
            os.chown(name, owner.pw_uid, owner.pw_gid)
    good, said = run(programs() + "/initdb", "-D", folder + "/data", "-U", USER, "-E", "UTF8",
                     "--locale=C.UTF-8", "--auth-local=trust", "--auth-host=scram-sha-256",
                     "--pwfile=" + folder + "/password", "--no-sync")
    os.remove(folder + "/password")
    if good and tls:
        good, said = certify(folder)
    for _ in range(5):  # somebody else may take the port first
        if not good:
            break
        port = free_port()
        settings = SETTINGS.format(folder=folder, port=port) + more
        settings += f"ssl = {'on' if tls else 'off'}\n"
        write(folder + "/data/postgresql.auto.conf", settings)
        good, said = control(folder, "start")
        if good:
            good, said = run(programs() + "/createdb", "-h", folder, "-p", str(port), "-U", USER,
                             DATABASE)
            break
        good = True
    else:
        good = False
    if not good:
        log = folder + "/log"
        if os.path.exists(log):
            with open(log, encoding="utf-8", errors="replace") as file:
                said += file.read()
        control(folder, "stop", "-m", "immediate")
        shutil.rmtree(folder, ignore_errors=True)
        sys.exit("The PostgreSQL server of the tests did not start:\n" + said)
    state = {"host": "127.0.0.1", "port": port, "socket": folder, "user": USER,
             "password": password, "database": DATABASE, "folder": folder,
             "certificate": folder + "/server.crt"}
    if tls:
        shutil.copy(folder + "/data/server.crt", state["certificate"])
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    write(path + ".new", "".join(f"{name}={value}\n" for name, value in state.items()))
    os.replace(path + ".new", path)


def restart(path):
    good, said = control(read_state(path)["folder"], "restart", "-m", "fast")
    if not good:
        sys.exit(said)


def stop(path):
    state = read_state(path)
    if not state:
        return
    if os.path.isdir(state["folder"]):
        control(state["folder"], "stop", "-m", "immediate")
        shutil.rmtree(state["folder"], ignore_errors=True)
    os.remove(path)


if __name__ == "__main__":
    actions = {"start": start, "plain": plain, "measure": measure, "restart": restart, "stop": stop}
    if len(sys.argv) != 3 or sys.argv[1] not in actions:
        sys.exit(__doc__)
    actions[sys.argv[1]](sys.argv[2])
