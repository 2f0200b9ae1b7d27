#!/usr/bin/env python3
"""Reads an strace log of Corvane (-f, network calls and file opens) and its own log:

- network: no socket of any family but AF_UNIX (no AF_INET, AF_INET6, AF_NETLINK, …), and every
  AF_UNIX connect goes to the X server, one of the D-Bus buses given with --allow-bus, an
  application's own accessibility socket (at-spi2-socket-PID, which GTK hands out through
  GetApplicationBusAddress) in a folder given with --allow-app-sockets, or the systemd journal;
- privacy: no --secret text (the search typed, the title of the command run) in Corvane's log or
  in any file it opened for writing or renamed into place.

Prints what it found and exits 1 on the first kind of failure it lists."""
import argparse
import re
import sys
from pathlib import Path
from urllib.parse import unquote

parser = argparse.ArgumentParser()
parser.add_argument("--trace", required=True, type=Path)
parser.add_argument("--log", required=True, type=Path)
parser.add_argument("--allow-bus", action="append", default=[])
parser.add_argument("--allow-app-sockets", action="append", default=[])
parser.add_argument("--secret", action="append", default=[])
args = parser.parse_args()

JOURNAL = "/run/systemd/journal/socket"


def bus_paths(address):
    """The socket paths of a D-Bus address ("unix:path=…" or "unix:abstract=…", "@" for abstract)."""
    paths = set()
    for part in address.split(";"):
        for key, prefix in (("path=", ""), ("abstract=", "@")):
            m = re.search(key + r"([^,]+)", part)
            if m:
                paths.add(prefix + unquote(m.group(1)))
    return paths


allowed_buses = set().union(*(bus_paths(a) for a in args.allow_bus)) if args.allow_bus else set()
trace = args.trace.read_text(errors="replace").splitlines()
if not trace:
    sys.exit("check_privacy: the trace is empty (was Corvane run under strace?)")

problems = []
families = {}
connects = {}
written = set()
for line in trace:
    m = re.search(r"\bsocket\((AF_\w+)", line)
    if m:
        families[m.group(1)] = families.get(m.group(1), 0) + 1
    m = re.search(r"\bconnect\(\d+, \{sa_family=(AF_\w+)(?:, sun_path=(@?)\"([^\"]*)\")?", line)
    if m:
        target = (m.group(2) or "") + (m.group(3) or "") if m.group(1) == "AF_UNIX" else m.group(1)
        connects[target] = connects.get(target, 0) + 1
    m = re.search(r"\b(?:openat|creat)\(.*?\"([^\"]+)\", ([A-Z_|]+)", line)
    if m and re.search(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND", m.group(2)) and "= -1" not in line:
        written.add(m.group(1))
    m = re.search(r"\brename(?:at2?)?\(.*?\"([^\"]+)\".*?\"([^\"]+)\"", line)
    if m and "= -1" not in line:
        written.add(m.group(2))

for family, count in sorted(families.items()):
    print(f"sockets: {family} × {count}")
    if family != "AF_UNIX":
        problems.append(f"a socket of family {family} was opened")


def kind(target):
    if re.search(r"\.X11-unix/X\d+$", target):
        return "the X server"
    if target in allowed_buses:
        return "a D-Bus bus"
    if target == JOURNAL:
        return "the journal"
    folder, _, name = target.rpartition("/")
    if folder in args.allow_app_sockets and re.fullmatch(r"at-spi2-socket-\d+", name):
        return "an application's accessibility socket"
    return None


for target, count in sorted(connects.items()):
    what = kind(target)
    print(f"connect: {target} × {count} ({what or 'NOT ALLOWED'})")
    if not what:
        problems.append(f"connected to {target}")

secrets = [s.encode() for s in args.secret]
log = args.log.read_bytes()
for secret in secrets:
    if secret in log:
        problems.append(f"the log {args.log} contains {secret.decode()!r}")

checked = 0
for name in sorted(written):
    path = Path(name)
    if not path.is_absolute() or name.startswith(("/dev/", "/proc/", "/sys/")) or not path.is_file():
        continue
    data = path.read_bytes()
    checked += 1
    print(f"written: {name} ({len(data)} bytes)")
    for secret in secrets:
        if secret in data:
            problems.append(f"{name} contains {secret.decode()!r}")
print(f"checked the log and {checked} written files for {len(secrets)} texts")

if problems:
    for p in problems:
        print("check_privacy:", p, file=sys.stderr)
    sys.exit(1)
print("check_privacy: no network but the X server, the buses, applications' accessibility sockets "
      "and the journal; no secret on disk")
