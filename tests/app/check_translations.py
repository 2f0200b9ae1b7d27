#!/usr/bin/env python3
"""German and French are complete and load from the system locale.

1. lupdate, run over the sources against a copy of each committed catalog, finds no new text,
   and no entry is unfinished or empty; every translation keeps its source's placeholders
   (%1, %2, %.2f) and its trailing "…" (a button that opens a window says so in every language).
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

root, build = Path(sys.argv[1]), Path(sys.argv[2])
lupdate = Path("/usr/lib/qt6/bin/lupdate")
preview = build / "bin/corvane-window-preview"
overlay = build / "bin/corvane-overlay-preview"
# The overlay shows a tiny catalog: its titles, key caps and key glyphs are the application's or
# the keyboard's, not Corvane's texts.
catalog = root / "tests/support/data/tiny-catalog.json"
not_text = {"Fixture", "Alpha", "ALPHA", "Beta", "Gamma", "Ctrl", "B", "be", "↑↓", "↩", "⎋"}
languages = {"de": "de_DE.UTF-8", "fr": "fr_FR.UTF-8"}
placeholder = re.compile(r"%(?:\d|\.2f)")
failures = []

catalogs = {}
with tempfile.TemporaryDirectory() as tmp:
    for language in languages:
        ts = Path(tmp) / f"corvane_{language}.ts"
        shutil.copy(root / f"data/translations/corvane_{language}.ts", ts)
        report = subprocess.run([lupdate, "-locations", "none", "-extensions", "cpp,h,qml",
                                 root / "src", "-ts", ts], capture_output=True, text=True,
                                check=True).stdout
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
            text = translation.text or ""
            if translation.get("type") == "unfinished" or not text.strip():
                failures.append(f"{language}: unfinished: \"{source}\"")
                continue
            if sorted(placeholder.findall(source)) != sorted(placeholder.findall(text)):
                failures.append(f"{language}: placeholders differ: \"{source}\" → \"{text}\"")
            if source.endswith("…") != text.endswith("…"):
                failures.append(f"{language}: the trailing … differs: \"{source}\" → \"{text}\"")
            pairs[source] = text
            translated += 1
        catalogs[language] = pairs
        print(f"{language}: {total} source texts, {translated} translated")


def shown(window, options, lang):
    env = {k: v for k, v in os.environ.items()
           if k not in ("LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG")}
    env["LANG"] = lang
    command = [overlay, *options] if window == "overlay" else [preview, window, *options]
    result = subprocess.run([*command, "--texts"], env=env,
                            capture_output=True, text=True, timeout=60)
    assert result.returncode == 0, f"{window}: preview failed: {result.stderr}"
    return {line for line in result.stdout.splitlines() if line.strip()}


def as_pattern(text):
    return re.compile("^" + placeholder.sub(".+", re.escape(text).replace(r"%\.2f", "%.2f"))
                      + "$")


states = [("settings", []), ("settings", ["--trusted"]), ("welcome", []),
          ("welcome", ["--trusted"]), ("welcome", ["--no-global-input"]), ("whatsnew", []),
          ("overlay", [str(catalog)]), ("overlay", [str(catalog), "--query", "be"]),
          ("overlay", [str(catalog), "--favorite", "Alpha>Beta"]),
          ("overlay", ["--app-name", "Fixture"])]
for language, lang in languages.items():
    same_word = [as_pattern(s) for s, t in catalogs[language].items() if s == t]
    for window, options in states:
        english = shown(window, options, "C.UTF-8")
        local = shown(window, options, lang)
        untranslated = [line for line in local & english if line not in not_text
                        and not any(p.match(line) for p in same_word)]
        for line in untranslated:
            failures.append(f"{language} {window} {' '.join(options)}: shown in English: "
                            f"\"{line}\"")
        print(f"{language} {window} {' '.join(options)}: {len(local)} texts, "
              f"{len(local - english)} differ from English")
    settings = shown("settings", [], lang)
    delay = "0,85" if language in ("de", "fr") else "0.85"
    if not any(delay in line for line in settings):
        failures.append(f"{language}: the hold delay is not written with the locale's decimal "
                        f"sign ({delay})")

assert not failures, "\n  ".join(["translations:"] + failures)
print("German and French complete, loaded from the system locale")
