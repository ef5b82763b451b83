#!/usr/bin/env bash
# Every test: the release build, the ASan+UBSan build, and the concurrency
# tests under TSan. Prints ctest's summary of each.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
export JOBS=${JOBS:-$(nproc)}

status=0
# run FLAVOUR "TARGETS" [ctest args...]: TARGETS empty builds everything.
run() {
  local flavour=$1 targets=$2; shift 2
  echo "=== $flavour"
  # shellcheck disable=SC2086
  bash scripts/build.sh "$flavour" $targets
  ctest --test-dir "build/$flavour" -j"$JOBS" --output-on-failure "$@" || status=1
}

run release ""
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 run asan ""
# Under TSan only what runs threads against each other: the loop, the
# daemon end to end and the stress tests.
TSAN_OPTIONS=halt_on_error=1 run tsan "velard core_tests e2e_tests" \
  -R 'CoreEndToEnd|EventLoop|Concurren|Stress'
if [ -x scripts/fuzz.sh ]; then
  echo "=== fuzz"
  bash scripts/fuzz.sh || status=1
fi
exit $status
