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

QT_BIN = Path("/usr/lib/qt6/bin")

# The overlay shows a tiny catalog: its titles and key caps are the application's, the trigger's
# key cap is the key's own name as the keyboard says it, ↑↓ ↩ ⎋ are key glyphs, and + − are the
# signs on a list's add and remove buttons.
NOT_TEXT = {"Fixture", "Alpha", "ALPHA", "Beta", "Gamma", "Ctrl", "B", "be", "↑↓", "↩", "⎋", "+",
            "−"}


def lupdate(root, ts, *options):
    """Runs lupdate over the sources into `ts`; returns what it reported."""
    return subprocess.run([QT_BIN / "lupdate", *options, "-extensions", "cpp,h,qml",
                           root / "src", "-ts", ts], capture_output=True, text=True,
                          check=True).stdout


def states(root):
    """Every (view, options) the checks open: each window in each state, and the overlay
    peeking, pinned, searching, with the Favorites card, and loading."""
    catalog = str(root / "tests/support/data/tiny-catalog.json")
    return [("settings", []), ("settings", ["--trusted"]), ("welcome", []),
            ("welcome", ["--trusted"]), ("welcome", ["--no-global-input"]), ("whatsnew", []),
            ("overlay", [catalog]), ("overlay", [catalog, "--pinned"]),
            ("overlay", [catalog, "--query", "be"]),
            ("overlay", [catalog, "--favorite", "Alpha>Beta"]),
            ("overlay", ["--app-name", "Fixture"]),
            ("overlay", ["--app-name", "Fixture", "--unreadable", "not-on-bus"]),
            ("overlay", ["--app-name", "Fixture", "--unreadable", "restart-needed"])]


def shown_texts(build, view, options, extra=(), env=None):
    """The texts the view shows in that state, in order, from the preview's --texts."""
    command = ([build / "bin/corvane-overlay-preview", *options] if view == "overlay"
               else [build / "bin/corvane-window-preview", view, *options])
    result = subprocess.run([*command, *extra, "--texts"], env=env, capture_output=True,
                            text=True, timeout=60)
    assert result.returncode == 0, f"{view}: preview failed: {result.stderr}"
    return [line for line in result.stdout.splitlines() if line.strip()]

root, build = Path(sys.argv[1]), Path(sys.argv[2])
languages = {"de": "de_DE.UTF-8", "fr": "fr_FR.UTF-8"}
placeholder = re.compile(r"%(?:\d|\.2f|n)")
foreign_desktop = re.compile(r"\bMac\b|Finder|System Settings|Applications folder|⌘")
failures = []

catalogs = {}
with tempfile.TemporaryDirectory() as tmp:
    for language in languages:
        ts = Path(tmp) / f"corvane_{language}.ts"
        shutil.copy(root / f"data/translations/corvane_{language}.ts", ts)
        report = lupdate(root, ts, "-locations", "none")
        found = re.search(r"Found (\d+) source text\(s\) \((\d+) new and (\d+) already", report)
        assert found, f"lupdate said: {report}"
        total, new = int(found[1]), int(found[2])
        if new:
            failures.append(f"{language}: {new} source texts are not in the catalog "
                            f"(run `make translations` and translate them)")
        pairs, translated = {}, 0
        for message in ET.parse(ts).iter("message"):
            source = message.find("source").text or ""
            translation = message.find("translation")
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
                    failures.append(f"{language}: the trailing … differs: \"{source}\" → "
                                    f"\"{text}\"")
            pairs[source] = forms[-1]
            translated += 1
        catalogs[language] = pairs
        print(f"{language}: {total} source texts, {translated} translated")


def shown(window, options, lang):
    env = {k: v for k, v in os.environ.items()
           if k not in ("LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG")}
    env["LANG"] = lang
    return set(shown_texts(build, window, options, env=env))


def as_pattern(text):
    return re.compile("^" + placeholder.sub(".+", re.escape(text).replace(r"%\.2f", "%.2f"))
                      + "$")


for language, lang in languages.items():
    same_word = [as_pattern(s) for s, t in catalogs[language].items() if s == t]
    for window, options in states(root):
        english = shown(window, options, "C.UTF-8")
        failures += [f"{window} {' '.join(options)}: speaks of another system: \"{line}\""
                     for line in english if foreign_desktop.search(line)]
        local = shown(window, options, lang)
        untranslated = [line for line in local & english if line not in NOT_TEXT
                        and not any(p.match(line) for p in same_word)]
        for line in untranslated:
            failures.append(f"{language} {window} {' '.join(options)}: shown in English: "
                            f"\"{line}\"")
        print(f"{language} {window} {' '.join(options)}: {len(local)} texts, "
              f"{len(local - english)} differ from English")
    settings = shown("settings", [], lang)
    delay = "0,85"  # German and French write a decimal comma
    if not any(delay in line for line in settings):
        failures.append(f"{language}: the hold delay is not written with the locale's decimal "
                        f"sign ({delay})")

# English holds the plural forms of every "%n" text.
with tempfile.TemporaryDirectory() as tmp:
    ts = Path(tmp) / "corvane_en.ts"
    shutil.copy(root / "data/translations/corvane_en.ts", ts)
    lupdate(root, ts, "-locations", "none", "-pluralonly")
    for message in ET.parse(ts).iter("message"):
        forms = [form.text or "" for form in message.iter("numerusform")]
        if message.find("translation").get("type") == "unfinished" or not all(forms):
            failures.append(f"en: plural forms missing: \"{message.find('source').text}\"")

assert not failures, "\n  ".join(["translations:"] + failures)
print("German and French complete, loaded from the system locale")
