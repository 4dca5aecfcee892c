#!/usr/bin/env bash
# The web player: builds the engine to WebAssembly with emscripten and puts
# the page together in build-web/site/.
#   scripts/web.sh          build
#   scripts/web.sh serve    build, then serve the page on http://localhost:8080/
#   scripts/web.sh sizes    build, then print the size of each part, raw and gzipped
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
# emscripten's JavaScript optimizer needs Debian's acorn, which lives there.
export NODE_PATH=/usr/share/nodejs
emcmake cmake -S . -B build-web -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build-web -j "$(nproc)"
if [ ! -d web/node_modules/puppeteer-core ]; then
  (cd web && npm ci --no-audit --no-fund --loglevel=error)
fi
case "${1:-build}" in
  build) ;;
  serve) exec python3 -m http.server 8080 --bind 127.0.0.1 --directory build-web/site ;;
  sizes)
    for f in zelengine.wasm zelengine.js zelplayer.js index.html; do
      printf '%-16s %8d bytes  %7d gzipped\n' "$f" "$(stat -c %s "build-web/site/$f")" \
        "$(gzip -9c "build-web/site/$f" | wc -c)"
    done ;;
  *) echo "usage: scripts/web.sh [build|serve|sizes]" >&2; exit 2 ;;
esac
