#!/usr/bin/env python3
"""Reads an strace log of Corvane (-f, network calls and file opens) and its own log:

- network: no socket of a family but AF_UNIX, and every connect goes to the X server, a D-Bus bus
  given with --allow-bus, an application's own accessibility socket (at-spi2-socket-PID, which
  GTK hands out) in a folder given with --allow-app-sockets, or the systemd journal;
- privacy: no --secret (the search typed) in Corvane's log or in any file it opened for writing
  or renamed into place, and no --log-secret (the title of the command run) in its log: the
  settings file may hold that title, as the history the user can switch off and forget."""
import argparse
import re
import sys
from pathlib import Path
from urllib.parse import unquote

parser = argparse.ArgumentParser()
for option in ("--trace", "--log"):
    parser.add_argument(option, required=True, type=Path)
for option in ("--allow-bus", "--allow-app-sockets", "--secret", "--log-secret"):
    parser.add_argument(option, action="append", default=[])
args = parser.parse_args()

buses = {("@" if key == "abstract" else "") + unquote(path)
         for address in args.allow_bus for key, path in re.findall(r"(path|abstract)=([^,;]+)", address)}
trace = args.trace.read_text(errors="replace").splitlines()
assert trace, "the trace is empty (was Corvane run under strace?)"


def allowed(target):
    folder, _, name = target.rpartition("/")
    return bool(re.search(r"\.X11-unix/X\d+$", target) or target in buses
                or target == "/run/systemd/journal/socket"
                or (folder in args.allow_app_sockets and re.fullmatch(r"at-spi2-socket-\d+", name)))


problems, written = [], set()
for line in trace:
    if m := re.search(r"\bsocket\((AF_\w+)", line):
        if m[1] != "AF_UNIX":
            problems.append(f"a socket of family {m[1]}: {line}")
    if m := re.search(r"\bconnect\(\d+, \{sa_family=(AF_\w+)(?:, sun_path=(@?)\"([^\"]*)\")?", line):
        target = (m[2] or "") + (m[3] or "") if m[1] == "AF_UNIX" else m[1]
        if not allowed(target):
            problems.append(f"connected to {target}")
    if "= -1" in line:
        continue
    if (m := re.search(r"\b(?:openat|creat)\(.*?\"([^\"]+)\", ([A-Z_|]+)", line)) and \
            re.search(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND", m[2]):
        written.add(m[1])
    if m := re.search(r"\brename(?:at2?)?\(.*?\"([^\"]+)\".*?\"([^\"]+)\"", line):
        written.add(m[2])

files = [args.log] + [Path(n) for n in sorted(written)
                      if n.startswith("/") and not n.startswith(("/dev/", "/proc/", "/sys/"))
                      and Path(n).is_file()]
for path in files:
    data = path.read_bytes()
    secrets = args.secret + (args.log_secret if path == args.log else [])
    problems += [f"{path} contains {s!r}" for s in secrets if s.encode() in data]
for p in problems:
    print("check_privacy:", p, file=sys.stderr)
print(f"check_privacy: {len(trace)} calls traced, {len(files)} files read for {len(args.secret) + len(args.log_secret)} texts")
sys.exit(1 if problems else 0)
