#!/usr/bin/env python3
"""Measures whether the test suite still finds deliberate faults.

Each fault in tests/mutations/faults.txt is one small change to the product code. The faults are
applied one at a time to a copy of the tree (the working tree is never touched), the copy is
built, and the tests that cover the changed code (CTest labels, the fault's own or the changed
folder's) run until the first failure. A fault that no test notices is reported as missed.

    tools/mutation-check.py [--work DIR] [--only TEXT] [--jobs N]

Faults file format, one block per fault:

    ### what the fault does
    file: src/trigger/HoldStateMachine.cpp
    labels: trigger|app           (optional; a regular expression over CTest labels)
    <<<<
    text as it stands (must occur exactly once)
    ====
    text with the fault
    >>>>
    (more <<<< ==== >>>> pairs in the same file make one fault)
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

root = Path(__file__).resolve().parents[1]
EXTENSIONS = {".cpp", ".h", ".qml", ".py", ".sh", ".js"}


def parse_faults(path):
    faults, fault, mode, old, new = [], None, None, [], []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if mode is None:
            if line.startswith("### "):
                fault = {"name": line[4:].strip(), "file": None, "labels": None,
                         "edits": [], "line": number}
                faults.append(fault)
            elif line.startswith("file:"):
                fault["file"] = line[5:].strip()
            elif line.startswith("labels:"):
                fault["labels"] = line[7:].strip()
            elif line == "<<<<":
                mode, old, new = "old", [], []
            elif line.strip() and not line.startswith("#"):
                sys.exit(f"{path}:{number}: unexpected line: {line}")
        elif mode == "old":
            if line == "====":
                mode = "new"
            else:
                old.append(line)
        elif line == ">>>>":
            fault["edits"].append(("\n".join(old), "\n".join(new)))
            mode = None
        else:
            new.append(line)
    for f in faults:
        if not f["file"] or not f["edits"]:
            sys.exit(f"{path}:{f['line']}: fault '{f['name']}' needs a file and an edit")
        if not f["labels"]:
            f["labels"] = Path(f["file"]).parts[1]  # src/FOLDER/…: the tests of tests/FOLDER
    return faults


def count_lines(*folders):
    total = 0
    for folder in folders:
        for path in (root / folder).rglob("*"):
            relative = path.relative_to(root).as_posix()
            if not path.is_file() or "/corpus/" in relative or "/mutations/" in relative:
                continue
            if path.suffix in EXTENSIONS or path.name == "CMakeLists.txt":
                total += len(path.read_bytes().splitlines())
    return total


def run(command, **kwargs):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          **kwargs)


def copy_tree(into):
    files = run(["git", "ls-files", "-co", "--exclude-standard"], cwd=root).stdout.split()
    for name in files:
        source, target = root / name, into / name
        if not source.is_file():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_bytes() != source.read_bytes():
            shutil.copy2(source, target)


def failed_tests(output):
    tail = output.split("The following tests FAILED:")[-1] if "FAILED:" in output else ""
    return re.findall(r"^\s*\d+ - (\S+)", tail, re.M)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--work", default=str(root / "build-mutation"))
    parser.add_argument("--only", help="run only the faults whose name matches this regular "
                        "expression (case-insensitive)")
    parser.add_argument("--jobs", default=str(os.cpu_count() or 2))
    parser.add_argument("--list", action="store_true",
                        help="only check that every fault applies to the tree, and list them")
    args = parser.parse_args()

    faults = parse_faults(root / "tests/mutations/faults.txt")
    if args.only:
        faults = [f for f in faults if re.search(args.only, f["name"], re.I)]
    if args.list:
        stale = 0
        for fault in faults:
            text = (root / fault["file"]).read_text()
            counts = [text.count(old) for old, _ in fault["edits"]]
            ok = all(c == 1 for c in counts)
            stale += not ok
            print(f"{'ok   ' if ok else 'STALE'} [{fault['labels']}] {fault['name']}")
        print(f"{len(faults)} faults, {stale} stale")
        return 1 if stale else 0
    work = Path(args.work).resolve()
    tree, build = work / "tree", work / "build"
    copy_tree(tree)
    configure = run(["cmake", "-S", tree, "-B", build, "-G", "Ninja",
                     "-DCMAKE_BUILD_TYPE=RelWithDebInfo"])
    if configure.returncode:
        sys.exit("mutation-check: configure failed:\n" + configure.stdout[-3000:])

    def build_tree():
        return run(["cmake", "--build", build, "-j", args.jobs])

    def test(labels):
        return run(["ctest", "--test-dir", build, "-L", labels, "-LE", "package|fuzz",
                    "--stop-on-failure", "--timeout", "300", "-j", args.jobs])

    baseline = build_tree()
    if baseline.returncode:
        sys.exit("mutation-check: the unchanged tree does not build:\n" + baseline.stdout[-3000:])
    labels = "|".join(sorted({f["labels"] for f in faults}))
    clean = test(labels)
    if clean.returncode:
        sys.exit("mutation-check: tests fail without any fault: "
                 + ", ".join(failed_tests(clean.stdout)) + "\n" + clean.stdout[-3000:])

    results = []
    for number, fault in enumerate(faults, 1):
        target = tree / fault["file"]
        original = target.read_text()
        mutated, problem = original, None
        for old, new in fault["edits"]:
            found = mutated.count(old)
            if found != 1:
                problem = f"stale: the text to change occurs {found} times in {fault['file']}"
                break
            mutated = mutated.replace(old, new)
        started = time.monotonic()
        outcome, detail = "stale", problem
        if not problem:
            target.write_text(mutated)
            try:
                built = build_tree()
                if built.returncode:
                    outcome, detail = "does not build", built.stdout[-400:].strip()
                else:
                    tested = test(fault["labels"])
                    caught = failed_tests(tested.stdout)
                    if tested.returncode:
                        outcome, detail = "caught", ", ".join(caught) or "ctest failed"
                    else:
                        outcome, detail = "MISSED", f"tests labelled {fault['labels']} all pass"
            finally:
                target.write_text(original)
        seconds = time.monotonic() - started
        results.append((fault, outcome))
        print(f"[{number:2}/{len(faults)}] {outcome:8} {fault['name']}  ({detail}; {seconds:.0f} s)",
              flush=True)
    build_tree()  # leave the copy built as it stands

    valid = [r for r in results if r[1] in ("caught", "MISSED")]
    caught = sum(1 for r in valid if r[1] == "caught")
    print()
    for fault, outcome in results:
        if outcome != "caught":
            print(f"{outcome}: {fault['name']} ({fault['file']})")
    share = 100.0 * caught / len(valid) if valid else 0.0
    tests, product = count_lines("tests"), count_lines("src", "tools", "bench")
    print(f"mutation-check: {caught} of {len(valid)} faults caught ({share:.0f} %)")
    print(f"mutation-check: test code {tests} lines, product code {product} lines, "
          f"ratio {tests / product:.2f}")
    invalid = len(results) - len(valid)
    if invalid:
        print(f"mutation-check: {invalid} faults could not be applied or built; fix their text")
    return 0 if valid and share >= 90.0 and not invalid else 1


if __name__ == "__main__":
    sys.exit(main())
