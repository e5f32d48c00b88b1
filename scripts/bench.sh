#!/bin/bash
# Runs the benchmarks and prints our figures beside the limits that their baselines set; ends non-zero if one is missed.
# Usage: scripts/bench.sh [part of a report's name]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need build test demo bench
cmake --preset release
cmake --build --preset release

results=build/release/ratios.txt
: >"$results"
for program in build/release/*_bench; do
    [ -x "$program" ] || continue
    "$program" "--report=${1-}" | tee -a "$results" | grep -v '^RATIO' || true
    [ "${PIPESTATUS[0]}" -le 1 ] || { echo "RATIO $(basename "$program") crashed - MISS" >>"$results"; }
done

grep '^RATIO ' "$results" >/dev/null || { echo "No report ran"; exit 1; }
awk 'BEGIN { printf "\n%-44s %12s %10s\n", "figure", "value", "limit" }
     /^RATIO / { printf "%-44s %12s %10s  %s\n", $2, $3, $4, $5; missed += $5 != "ok" }
     END { printf "\n%s\n", missed ? missed " missed" : "all within their limits"; exit missed != 0 }' "$results"
