#!/usr/bin/env python3
"""Every text of the secondary windows and the overlay goes through tr() (qsTr in QML): a pseudo-translation of
every source text lupdate finds is compiled, each window is opened with it in every state, and
every text it shows must come out translated (wrapped in ⟦ ⟧). A text that is not looked up
shows untranslated and fails the check.

    check_translatable.py SOURCE_DIR BUILD_DIR
"""
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from pathlib import Path

root, build = Path(sys.argv[1]), Path(sys.argv[2])
qt_bin = Path("/usr/lib/qt6/bin")
preview = build / "bin/corvane-window-preview"
overlay = build / "bin/corvane-overlay-preview"
catalog = root / "tests/support/data/tiny-catalog.json"

# The key cap shows the trigger key's own name, as the keyboard says it.
not_text = {"Ctrl"}
# The overlay's tiny catalog: the application's titles and its key caps, and the key glyphs.
not_text |= {"Fixture", "Alpha", "ALPHA", "Beta", "Gamma", "B", "be", "↑↓", "↩", "⎋"}

with tempfile.TemporaryDirectory() as tmp:
    ts, qm = Path(tmp) / "pseudo.ts", Path(tmp) / "pseudo.qm"
    subprocess.run([qt_bin / "lupdate", "-silent", "-extensions", "cpp,h,qml", root / "src",
                    "-ts", ts], check=True)
    tree = ET.parse(ts)
    messages = 0
    for message in tree.iter("message"):
        source = message.find("source").text or ""
        translation = message.find("translation")
        translation.attrib.pop("type", None)
        if message.get("numerus") == "yes":
            for form in list(translation):
                translation.remove(form)
            for _ in range(2):
                ET.SubElement(translation, "numerusform").text = f"⟦{source}⟧"
        else:
            translation.text = f"⟦{source}⟧"
        messages += 1
    tree.write(ts, encoding="utf-8", xml_declaration=True)
    subprocess.run([qt_bin / "lrelease", "-silent", ts, "-qm", qm], check=True)
    print(f"pseudo-translation of {messages} source texts")

    failures = []
    for window, options in [("settings", []), ("settings", ["--trusted"]),
                            ("welcome", []), ("welcome", ["--trusted"]),
                            ("welcome", ["--no-global-input"]), ("whatsnew", []),
                            ("overlay", [str(catalog)]), ("overlay", [str(catalog), "--pinned"]),
                            ("overlay", [str(catalog), "--query", "be"]),
                            ("overlay", [str(catalog), "--favorite", "Alpha>Beta"]),
                            ("overlay", ["--app-name", "Fixture"])]:
        command = [overlay, *options] if window == "overlay" else [preview, window, *options]
        result = subprocess.run([*command, "--translation", qm, "--texts"],
                                capture_output=True, text=True, timeout=60)
        assert result.returncode == 0, f"{window}: preview failed: {result.stderr}"
        shown = [line for line in result.stdout.splitlines() if line.strip()]
        assert len(shown) > 5, f"{window}: only {len(shown)} texts shown"
        for line in shown:
            if "⟦" not in line and line not in not_text:
                failures.append(f"{window} {' '.join(options)}: \"{line}\"")
        print(f"{window} {' '.join(options)}: {len(shown)} texts, all translated")
    assert not failures, "texts that do not go through tr():\n  " + "\n  ".join(failures)
