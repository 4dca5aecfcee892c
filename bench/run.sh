#!/usr/bin/env bash
# Runs every bench_* program of a build and prints one table with a row per
# scene: the time of each renderer (tov, the engine, cairo, AGG) and the
# ratios of tov and of the engine to the faster of cairo and AGG (below 1:
# faster than both). Benchmarks are named "scene/renderer".
#   bench/run.sh [build-dir] [extra Google Benchmark flags...]
set -euo pipefail
build=${1:-build}
shift || true
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
found=0
while IFS= read -r program; do
  found=1
  echo "running $(basename "$program")..." >&2
  "$program" --benchmark_format=json --benchmark_repetitions=3 \
    --benchmark_report_aggregates_only=true "$@" >"$out/$(basename "$program").json"
done < <(find "$build" -type f -name 'bench_*' -perm -u+x | sort)
if [ "$found" = 0 ]; then
  echo "no bench_* programs under $build" >&2
  exit 1
fi
python3 - "$out"/*.json <<'PY'
import json, sys
# Median CPU time per scene and renderer, in milliseconds (CPU time rather
# than wall time: it is steadier on a shared machine).
scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
times, order = {}, []
for path in sys.argv[1:]:
    for b in json.load(open(path))["benchmarks"]:
        if b.get("aggregate_name", "median") != "median":
            continue
        scene, _, renderer = b["run_name"].rpartition("/")
        if scene not in times:
            times[scene] = {}
            order.append(scene)
        times[scene][renderer] = b["cpu_time"] * scale[b.get("time_unit", "ns")]
renderers = ["tov", "engine", "cairo", "agg"]
for scene in order:
    renderers += [r for r in times[scene] if r not in renderers]
def ratio(t, r):
    peers = [t[p] for p in ("cairo", "agg") if p in t]
    return "%.2fx" % (t[r] / min(peers)) if r in t and peers else "-"
head = ["scene"] + [r + " ms" for r in renderers] + ["tov/best", "engine/best"]
rows = []
for scene in order:
    t = times[scene]
    rows.append([scene] + ["%.2f" % t[r] if r in t else "-" for r in renderers] + [ratio(t, "tov"), ratio(t, "engine")])
width = [max(len(r[i]) for r in rows + [head]) for i in range(len(head))]
for r in [head] + rows:
    print("  ".join(c.ljust(w) if i == 0 else c.rjust(w) for i, (c, w) in enumerate(zip(r, width))))
PY
