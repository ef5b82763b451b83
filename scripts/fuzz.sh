#!/usr/bin/env bash
# Builds the fuzz targets (Clang, libFuzzer, ASan+UBSan) into build/fuzz,
# replays each committed corpus, then fuzzes each target for a bounded time
# (FUZZ_SECONDS, default 60). A crash leaves its input under
# build/fuzz/findings/<target>/: once fixed, commit it as a seed in
# fuzz/corpus/<target>/ so that every later run replays it.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${FUZZ_SECONDS:-60}
bash scripts/build.sh fuzz fuzz_commands fuzz_records

status=0
for target in commands records; do
  bin=build/fuzz/fuzz/fuzz_$target
  seeds=fuzz/corpus/$target
  work=build/fuzz/corpus/$target   # what the run finds; the committed seeds stay small
  findings=build/fuzz/findings/$target
  mkdir -p "$work" "$findings"
  # -close_fd_mask=2: the handlers' log lines go nowhere, the fuzzer's own
  # output and the sanitizers' reports still show.
  common=(-close_fd_mask=2 -max_len=16384 -artifact_prefix="$findings/")
  log=build/fuzz/fuzz_$target.log
  echo "=== fuzz_$target: replaying $(ls "$seeds" | wc -l) seeds"
  rc=0
  "$bin" "${common[@]}" -runs=0 "$seeds" > "$log" 2>&1 || rc=$?
  grep -E '^(INFO: seed corpus|Done)' "$log" || true
  if [ $rc -ne 0 ]; then status=1; echo "fuzz_$target: a seed fails"; tail -40 "$log"; continue; fi
  echo "=== fuzz_$target: ${seconds} s"
  "$bin" "${common[@]}" -max_total_time="$seconds" -print_final_stats=1 "$work" "$seeds" \
      > "$log" 2>&1 || rc=$?
  grep -E '^(#[0-9]+ *DONE|stat::number_of_executed_units|stat::new_units_added)' "$log" || true
  if [ $rc -ne 0 ]; then status=1; echo "fuzz_$target: FAILED (input in $findings)"; tail -40 "$log"; fi
done
exit $status
