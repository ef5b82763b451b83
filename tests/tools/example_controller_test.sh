#!/usr/bin/env bash
# The example controller answers a request and raises a notification for a
# client of the real daemon: both frames reach the client.
#   example_controller_test.sh VELARD_HOST IMSCTL EXAMPLE
set -euo pipefail
host_bin=$1 imsctl_bin=$2 example=$3
dir=$(mktemp -d /tmp/velard-example-XXXXXX)
cleanup() {
    kill "$controller" "$host" 2>/dev/null || true
    wait 2>/dev/null || true
    rm -rf "$dir"
}
trap cleanup EXIT

python3 "$example" "$dir/ctl" > "$dir/controller.out" &
controller=$!
for _ in $(seq 200); do [ -S "$dir/ctl" ] && break; sleep 0.05; done
"$host_bin" --socket "$dir/velard" --once -- VELAR_SIM_CONTROL="$dir/ctl" 2> "$dir/host.err" &
host=$!

# The client's input stays open until the notification has arrived, so that
# no waiting time has to be guessed.
{
    echo '{"token":7,"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":5}}'
    echo '{"token":8,"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":6}}'
    for _ in $(seq 400); do
        [ "$(grep -c '"frame":"notify"' "$dir/client.out" 2>/dev/null)" = 2 ] && break
        sleep 0.05
    done
} | "$imsctl_bin" --socket "$dir/velard" --connect-ms 20000 --wait-ms 100 > "$dir/client.out"

fail() {
    echo "FAIL: $1" >&2
    for f in client.out controller.out host.err; do echo "--- $f" >&2; cat "$dir/$f" >&2; done
    exit 1
}
for n in 7:5 8:6; do
    grep -q "^{\"frame\":\"response\",\"token\":${n%:*},\"message\":{\"resid\":\"REQ_UA_DELETION\",\"generalResponse\":{\"handle\":${n#*:}," \
        "$dir/client.out" || fail "no answer to request ${n%:*}"
    grep -q "^{\"frame\":\"notify\",\"token\":0,\"message\":{\"notifyid\":\"NOTI_CANCEL_ALARM\",\"cancelAlarm\":{\"id\":${n#*:}}" \
        "$dir/client.out" || fail "no notification after request ${n%:*}"
done
grep -q '^< {"type":"done","seq":4}' "$dir/controller.out" || fail "the last notification was not done"
echo "example controller served its client"
