#!/usr/bin/env bash
# Installs every system package that the build, the tests and the tools need
# on a fresh Debian machine, and any further packages named as arguments
# (what only the benchmarks use, for one).
set -euo pipefail
PKGS=(build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
      protobuf-compiler libprotobuf-dev nlohmann-json3-dev
      libgtest-dev libgmock-dev libbenchmark-dev python3 libcap2-bin
      # The device's own libcutils and libutils, linked by the host build.
      android-libcutils-dev android-libutils-dev
      # The platform build description's checks: bpfmt, and the platform
      # build system's Go sources with what they import.
      blueprint-tools golang-go golang-android-soong-dev
      golang-github-google-blueprint-dev golang-github-golang-protobuf-1-3-dev
      # The SELinux policy's check: its compilers and setfiles.
      checkpolicy secilc m4 policycoreutils
      # Decoding session captures with the Wireshark dissector.
      tshark "$@")
missing=()
for p in "${PKGS[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""; [ "$(id -u)" -eq 0 ] || SUDO=sudo
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y "${missing[@]}"
fi
