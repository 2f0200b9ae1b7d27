#!/usr/bin/python3
"""A straightforward menu walker with pyatspi (Debian's python3-pyatspi), the benchmark's
baseline: the crawl's rules read plainly, one request at a time.

    reference_walker.py PID RUNS   prints "items N" and "ms M1 M2 ..." (one time per run)

The benchmark runs it once per sample in a fresh process, so that libatspi's own cache starts
empty each time, as Corvane's crawl does.
"""
import sys
import time

import pyatspi

ITEM_CAP = 2500
DEPTH_LIMIT = 5


def find_app(pid):
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.get_process_id() == pid:
            return app
    return None


def find_menu_bar(app):
    frames = [f for f in app if f is not None]
    frame = next((f for f in frames if f.getState().contains(pyatspi.STATE_ACTIVE)), None) or \
        next((f for f in frames if f.getState().contains(pyatspi.STATE_SHOWING)), None) or \
        (frames[0] if frames else None)
    level = [frame] if frame else []
    for _ in range(8):
        nxt = []
        for node in level:
            for child in node:
                if child is None:
                    continue
                if child.getRole() == pyatspi.ROLE_MENU_BAR:
                    return child
                nxt.append(child)
        level = nxt
    return None


def submenu(item):
    if item.getRole() == pyatspi.ROLE_MENU:
        return item
    if item.childCount == 0:
        return None
    for child in item:
        if child is not None and child.getRole() in (pyatspi.ROLE_MENU, pyatspi.ROLE_POPUP_MENU):
            return child
    return None


def crawl(pid):
    app = find_app(pid)
    bar = find_menu_bar(app)
    count = [0]
    commands = []

    def collect(element, path, depth):
        seen = {}
        for child in element:
            if count[0] >= ITEM_CAP:
                return
            if child is None or not child.name:
                continue
            occurrence = seen.get(child.name, 0)
            seen[child.name] = occurrence + 1
            here = path + [(child.name, occurrence)]
            sub = submenu(child)
            if sub is None:
                count[0] += 1
                states = child.getState()
                try:
                    action = child.queryAction()
                    binding = action.getKeyBinding(0) if action.nActions else ""
                except NotImplementedError:
                    binding = ""
                commands.append((here, binding, states.contains(pyatspi.STATE_ENABLED),
                                 states.contains(pyatspi.STATE_CHECKED)))
            elif depth >= DEPTH_LIMIT or sub.childCount == 0:
                continue
            else:
                collect(sub, here, depth + 1)

    seen = {}
    for top in bar:
        if count[0] >= ITEM_CAP:
            break
        if top is None or not top.name:
            continue
        occurrence = seen.get(top.name, 0)
        seen[top.name] = occurrence + 1
        sub = submenu(top)
        if sub is not None:
            collect(sub, [(top.name, occurrence)], 1)
    return count[0]


def main():
    pid, runs = int(sys.argv[1]), int(sys.argv[2])
    times = []
    items = 0
    for _ in range(runs):
        start = time.perf_counter()
        items = crawl(pid)
        times.append((time.perf_counter() - start) * 1000)
    print("items", items)
    print("ms", " ".join("%.2f" % t for t in times))


if __name__ == "__main__":
    main()
