#!/usr/bin/env bash
# Every test: the release build, the ASan+UBSan build, and the concurrency
# tests under TSan. Prints ctest's summary of each.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
export JOBS=${JOBS:-$(nproc)}

status=0
run() {
  local flavour=$1; shift
  echo "=== $flavour"
  bash scripts/build.sh "$flavour"
  ctest --test-dir "build/$flavour" -j"$JOBS" --output-on-failure "$@" || status=1
}

run release
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 run asan
TSAN_OPTIONS=halt_on_error=1 run tsan -R 'CoreEndToEnd|EventLoop|Concurren|Stress'
if [ -x scripts/fuzz.sh ]; then
  echo "=== fuzz"
  bash scripts/fuzz.sh || status=1
fi
exit $status
