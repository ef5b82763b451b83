#!/usr/bin/env bash
# Captures the demo session (demo/session.d, with the stack's notifications
# of demo/script.d) into tests/data/demo-session.pcapng, which the test suite
# replays. Run it again after changing the demo or what the daemon sends.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh release velard velard-host imsctl >/dev/null

run=$(mktemp -d /tmp/velard-capture.XXXXXX)
trap 'rm -rf "$run"' EXIT
cat demo/script.d/*.jsonl > "$run/script.jsonl"
bin=build/release/tools
"$bin/velard-host" --socket "$run/velard.sock" --once --daemon build/release/core/velard \
    --capture tests/data/demo-session.pcapng -- VELAR_SIM_SCRIPT="$run/script.jsonl" \
    2> "$run/velard.log" &
host=$!
cat demo/session.d/*.jsonl | "$bin/imsctl" --socket "$run/velard.sock" --linger-ms 300 > /dev/null
wait "$host" || true
"$bin/imsctl" decode --compact tests/data/demo-session.pcapng | wc -l |
    xargs printf 'tests/data/demo-session.pcapng: %s packets\n'
