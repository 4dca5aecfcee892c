#!/usr/bin/env bash
# Builds the libFuzzer target with clang (ASan + UBSan), writes the seed
# corpus with the fixture builder (movies with shapes, morphs, sprites with
# clip layers, fonts and texts, buttons) and fuzzes for the given number of
# seconds (default 60). Any input that takes more than 2 s counts as a finding
# (a hang to its host), as does a crash or a leak; findings land in
# build-fuzz/crashes/.
#   scripts/fuzz.sh 3600      one hour
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
bash scripts/setup.sh
dir=build-fuzz
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DZEL_BUILD_FUZZ=ON -DZEL_BUILD_TESTS=ON -DZEL_BUILD_BENCH=OFF -DZEL_BUILD_TOOLS=OFF >/dev/null
cmake --build "$dir" -j "$(nproc)" --target fuzz_movie make_fuzz_corpus
mkdir -p "$dir/corpus" "$dir/crashes"
"$dir/fuzz/make_fuzz_corpus" "$dir/corpus"
"$dir/fuzz/fuzz_movie" "$dir/corpus" -max_total_time="$seconds" -max_len=16384 -timeout=2 \
  -rss_limit_mb=2048 -artifact_prefix="$dir/crashes/" -print_final_stats=1 2>&1 | tail -n 15
