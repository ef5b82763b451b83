#!/usr/bin/env bash
# The main job: from a fresh machine, build velard and run it on the
# simulated stack under the init stand-in, driven by a short client session.
# Every request, response and notification is printed as it passes.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh >/dev/null
bash scripts/build.sh release velard velard-host imsctl >/dev/null

run=$(mktemp -d /tmp/velard-demo.XXXXXX)
trap 'kill "$host" 2>/dev/null || true; wait 2>/dev/null || true' EXIT
cat demo/script.d/*.jsonl > "$run/script.jsonl" 2>/dev/null || : > "$run/script.jsonl"
bin=build/release/tools
# The same service description as on a device (velard.rc): the host takes
# the socket's name and the environment from it.
"$bin/velard-host" --rc velard.rc --socket "$run/velard.sock" --once --daemon build/release/core/velard \
    -- VELAR_SIM_SCRIPT="$run/script.jsonl" VELARD_PROP_sys_ims_current_uid=0 \
    2> "$run/velard.log" &
host=$!
for _ in $(seq 100); do [ -S "$run/velard.sock" ] && break; sleep 0.05; done
sleep 0.2

echo "velard is running on the simulated stack (log: $run/velard.log)."
echo "Client session, one JSON line per frame:"
cat demo/session.d/*.jsonl | "$bin/imsctl" --socket "$run/velard.sock" --linger-ms 300
wait "$host" || true
echo "The client has gone; velard ended with it, as on a device."
