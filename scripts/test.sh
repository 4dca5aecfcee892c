#!/usr/bin/env bash
# Builds the project and runs every test suite.
#   scripts/test.sh             g++ Release build in build/, and the web player
#                               (scripts/web.sh) whose tests run with the rest
#   scripts/test.sh --sanitize  clang build with AddressSanitizer + UBSan in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DZEL_SANITIZE=ON -DZEL_BUILD_BENCH=OFF >/dev/null
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  # The web player's page first: its tests compare it with the native build.
  bash scripts/web.sh build
  dir=build
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
fi
cmake --build "$dir" -j "$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
