#!/usr/bin/env bash
# Runs one fuzzer for SECONDS on its seed corpus, new inputs in a scratch folder. A crash or a
# broken property fails; its input is printed (base64) and kept as crash-* in the build folder,
# to be added to the corpus with the fix.
#
#   run-fuzzer.sh FUZZER CORPUS SECONDS   (CORVANE_FUZZ_SECONDS, when set, overrides SECONDS)
set -euo pipefail
fuzzer=$1 corpus=$2 seconds=${CORVANE_FUZZ_SECONDS:-$3}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
artifacts=$(dirname "$fuzzer")/findings/$(basename "$fuzzer")/
mkdir -p "$artifacts"
set +e
"$fuzzer" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=2048 -max_len=65536 \
    -artifact_prefix="$artifacts" -print_final_stats=1 "$scratch" "$corpus" 2> "$scratch.log"
status=$?
set -e
grep -E "^(stat::number_of_executed_units|stat::new_units_added|INFO: seed corpus|#[0-9]+ *DONE)" "$scratch.log" || true
if ((status != 0)); then
    tail -40 "$scratch.log"
    for finding in "$artifacts"*; do
        [ -f "$finding" ] && { echo "input $finding:"; base64 "$finding" | head -20; }
    done
    rm -f "$scratch.log"
    exit 1
fi
rm -f "$scratch.log"
