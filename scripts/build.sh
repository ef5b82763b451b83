#!/usr/bin/env bash
# Configures and builds one flavour into build/<flavour>:
#   release (default), asan (ASan+UBSan), tsan, fuzz (Clang, libFuzzer
#   coverage with ASan+UBSan everywhere; see scripts/fuzz.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
flavour=${1:-release}
sanitized=("-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1")
case "$flavour" in
  release) args=(-DCMAKE_BUILD_TYPE=Release) ;;
  # Sanitizer builds at -O1 with line tables only: what their reports need,
  # at a fraction of the compile time of -O2 -g on the record templates.
  asan) args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo "${sanitized[@]}" -DVELARD_SANITIZE=address) ;;
  tsan) args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo "${sanitized[@]}" -DVELARD_SANITIZE=thread) ;;
  fuzz) args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo "${sanitized[@]}" -DVELARD_SANITIZE=address
              -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
              "-DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link") ;;
  *) echo "unknown flavour $flavour" >&2; exit 2 ;;
esac
shift || true
# A compiler cache where one is installed (work trees side by side share it;
# paths inside the tree are hashed relative to it). CI builds without.
if command -v ccache >/dev/null; then
  export CCACHE_BASEDIR=$PWD
  args+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S . -B "build/$flavour" -G Ninja "${args[@]}" >/dev/null
ninja -C "build/$flavour" -j"${JOBS:-$(nproc)}" "$@"
