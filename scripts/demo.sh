#!/usr/bin/env bash
# The README's first command: installs what is missing, builds the project
# (Release, g++, in build/) and renders every frame of samples/demo.swf to
# out/frame_NNNN.png with the command-line player.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build -j "$(nproc)"
mkdir -p out
build/tools/zelplay info samples/demo.swf
build/tools/zelplay render samples/demo.swf -o out/frame_%04d.png
echo "demo: frames written to out/ (e.g. out/frame_0001.png)"
