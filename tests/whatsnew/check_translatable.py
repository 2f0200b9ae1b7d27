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

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
import previews  # noqa: E402

root, build = Path(sys.argv[1]), Path(sys.argv[2])

with tempfile.TemporaryDirectory() as tmp:
    ts, qm = Path(tmp) / "pseudo.ts", Path(tmp) / "pseudo.qm"
    previews.lupdate(root, ts, "-silent")
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
    subprocess.run([previews.QT_BIN / "lrelease", "-silent", ts, "-qm", qm], check=True)
    print(f"pseudo-translation of {messages} source texts")

    failures = []
    for window, options in previews.states(root):
        shown = previews.shown_texts(build, window, options, ["--translation", qm])
        assert len(shown) > 5, f"{window}: only {len(shown)} texts shown"
        for line in shown:
            if "⟦" not in line and line not in previews.NOT_TEXT:
                failures.append(f"{window} {' '.join(options)}: \"{line}\"")
        print(f"{window} {' '.join(options)}: {len(shown)} texts, all translated")
    assert not failures, "texts that do not go through tr():\n  " + "\n  ".join(failures)
