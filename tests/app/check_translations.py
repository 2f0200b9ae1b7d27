#!/usr/bin/env python3
"""German and French are complete and load from the system locale.

1. lupdate, run over the sources against a copy of each committed catalog, finds no new text,
   and no entry is unfinished or empty; every translation keeps its source's placeholders
   (%1, %2, %.2f) and its trailing "…" (a button that opens a window says so in every language).
   No English text names another desktop's places (a Mac, Finder, System Settings) or draws ⌘.
2. Each window, opened by corvane-window-preview with LANG set to de_DE.UTF-8 or fr_FR.UTF-8
   (nothing else), shows only translated texts: a text the English run also shows must be one
   whose translation is the same word ("OK", "Ctrl", "Version %1"). The preview finds the
   compiled catalogs as Corvane does, in ../share/corvane/translations beside the executable.
3. English holds the plural forms of every "%n" text.

    check_translations.py SOURCE_DIR BUILD_DIR
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from pathlib import Path

root, build = Path(sys.argv[1]), Path(sys.argv[2])
placeholder = re.compile(r"%(?:\d|\.2f|n)")
foreign_desktop = re.compile(r"\bMac\b|Finder|System Settings|Applications folder|⌘")
# The overlay shows a tiny catalog: its titles and key caps are the application's, the trigger's
# key cap is the key's own name as the keyboard says it, ↑↓ ↩ ⎋ are key glyphs, and + − are the
# signs on a list's add and remove buttons.
NOT_TEXT = {"Fixture", "Alpha", "ALPHA", "Beta", "Gamma", "Ctrl", "B", "be", "↑↓", "↩", "⎋", "+",
            "−"}
catalog = str(root / "tests/support/data/tiny-catalog.json")
# Every (view, options) the checks open: each window in each state, and the overlay peeking,
# pinned, searching, with the Favorites card, loading, and for an application it cannot read.
STATES = [("settings", []), ("settings", ["--trusted"]), ("welcome", []),
          ("welcome", ["--trusted"]), ("welcome", ["--no-global-input"]), ("whatsnew", []),
          ("overlay", [catalog]), ("overlay", [catalog, "--pinned"]),
          ("overlay", [catalog, "--query", "be"]), ("overlay", [catalog, "--favorite", "Alpha>Beta"]),
          ("overlay", ["--app-name", "Fixture"]),
          ("overlay", ["--app-name", "Fixture", "--unreadable", "not-on-bus"]),
          ("overlay", ["--app-name", "Fixture", "--unreadable", "restart-needed"])]
failures = []


def checked_catalog(language, *options):
    """lupdate over the sources into a copy of the committed catalog: its report and messages."""
    with tempfile.TemporaryDirectory() as tmp:
        ts = Path(tmp) / f"corvane_{language}.ts"
        shutil.copy(root / f"data/translations/corvane_{language}.ts", ts)
        report = subprocess.run(["/usr/lib/qt6/bin/lupdate", "-locations", "none", *options,
                                 "-extensions", "cpp,h,qml", root / "src", "-ts", ts],
                                capture_output=True, text=True, check=True).stdout
        return report, list(ET.parse(ts).iter("message"))


def shown(view, options, lang):
    """The texts the view shows in that state, from the preview's --texts, with LANG alone."""
    env = {k: v for k, v in os.environ.items()
           if k not in ("LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG")}
    env["LANG"] = lang
    command = ([build / "bin/corvane-overlay-preview", *options] if view == "overlay"
               else [build / "bin/corvane-window-preview", view, *options])
    result = subprocess.run([*command, "--texts"], env=env, capture_output=True, text=True,
                            timeout=60)
    assert result.returncode == 0, f"{view}: preview failed: {result.stderr}"
    return {line for line in result.stdout.splitlines() if line.strip()}


for language, lang in {"de": "de_DE.UTF-8", "fr": "fr_FR.UTF-8"}.items():
    report, messages = checked_catalog(language)
    found = re.search(r"Found (\d+) source text\(s\) \((\d+) new", report)
    assert found, f"lupdate said: {report}"
    if int(found[2]):
        failures.append(f"{language}: {found[2]} source texts are not in the catalog "
                        f"(run `make translations` and translate them)")
    same_word = []
    for message in messages:
        source, translation = message.find("source").text or "", message.find("translation")
        if translation.get("type") in ("vanished", "obsolete"):
            continue
        forms = [form.text or "" for form in translation.iter("numerusform")]
        forms = forms or [translation.text or ""]
        if translation.get("type") == "unfinished" or not all(f.strip() for f in forms):
            failures.append(f"{language}: unfinished: \"{source}\"")
            continue
        for text in forms:
            if sorted(placeholder.findall(source)) != sorted(placeholder.findall(text)):
                failures.append(f"{language}: placeholders differ: \"{source}\" → \"{text}\"")
            if source.endswith("…") != text.endswith("…"):
                failures.append(f"{language}: the trailing … differs: \"{source}\" → \"{text}\"")
        if source == forms[-1]:
            escaped = re.escape(source).replace(r"%\.2f", "%.2f")
            same_word.append(re.compile("^" + placeholder.sub(".+", escaped) + "$"))
    print(f"{language}: {found[1]} source texts")

    for view, options in STATES:
        state = f"{view} {' '.join(options)}"
        english, local = shown(view, options, "C.UTF-8"), shown(view, options, lang)
        failures += [f"{state}: speaks of another system: \"{line}\""
                     for line in english if foreign_desktop.search(line)]
        failures += [f"{language} {state}: shown in English: \"{line}\""
                     for line in local & english
                     if line not in NOT_TEXT and not any(p.match(line) for p in same_word)]
        # German and French write a decimal comma.
        if (view, options) == ("settings", []) and not any("0,85" in line for line in local):
            failures.append(f"{language}: the hold delay is not written with the decimal comma")
        print(f"{language} {state}: {len(local)} texts, {len(local - english)} differ from English")

_, messages = checked_catalog("en", "-pluralonly")
for message in messages:
    forms = [form.text or "" for form in message.iter("numerusform")]
    if message.find("translation").get("type") == "unfinished" or not all(forms):
        failures.append(f"en: plural forms missing: \"{message.find('source').text}\"")

assert not failures, "\n  ".join(["translations:"] + failures)
print("German and French complete, loaded from the system locale")
