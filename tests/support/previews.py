"""What the translation checks share: lupdate, the preview programs, every state they open a view
in, and the texts those views show that are not Corvane's own.

    import previews   (with tests/support on sys.path)
"""
import subprocess
from pathlib import Path

QT_BIN = Path("/usr/lib/qt6/bin")

# The overlay shows a tiny catalog: its titles and key caps are the application's, the trigger's
# key cap is the key's own name as the keyboard says it, and ↑↓ ↩ ⎋ are key glyphs.
NOT_TEXT = {"Fixture", "Alpha", "ALPHA", "Beta", "Gamma", "Ctrl", "B", "be", "↑↓", "↩", "⎋"}


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
            ("overlay", ["--app-name", "Fixture"])]


def shown_texts(build, view, options, extra=(), env=None):
    """The texts the view shows in that state, in order, from the preview's --texts."""
    command = ([build / "bin/corvane-overlay-preview", *options] if view == "overlay"
               else [build / "bin/corvane-window-preview", view, *options])
    result = subprocess.run([*command, *extra, "--texts"], env=env, capture_output=True,
                            text=True, timeout=60)
    assert result.returncode == 0, f"{view}: preview failed: {result.stderr}"
    return [line for line in result.stdout.splitlines() if line.strip()]
