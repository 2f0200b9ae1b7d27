#!/usr/bin/env bash
# The GNOME Shell companion as Shell 45 and later load it (an ES module) parses. gjs -m reads the
# whole module before it resolves the imports, and the Shell's own modules exist only inside the
# Shell: past the parse it stops at them, which is how a good module ends here.
#
#   check_companion_module.sh EXTENSION_JS
set -euo pipefail
out=$(gjs -m "$1" 2>&1 || true)
if grep -q "SyntaxError\|Failed to parse" <<<"$out" || ! grep -q "Failed to resolve imports" <<<"$out"; then
    echo "$out" >&2
    echo "check_companion_module: $1 does not parse as a module" >&2
    exit 1
fi
echo "the companion module for GNOME Shell 45 and later parses"
