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
    output=$("$program" "--report=${1-}") && status=0 || status=$?
    grep '^RATIO ' <<<"$output" >>"$results" || true
    grep -v '^RATIO ' <<<"$output" || true
    [ $status -le 1 ] || echo "RATIO $(basename "$program")_ended_with $status 0 MISS" >>"$results"
done

grep '^RATIO ' "$results" >/dev/null || { echo "No report ran"; exit 1; }
awk 'BEGIN { printf "\n%-44s %12s %10s\n", "figure", "value", "limit" }
     /^RATIO / { printf "%-44s %12s %10s  %s\n", $2, $3, $4, $5; missed += $5 != "ok" }
     END { printf "\n%s\n", missed ? missed " missed" : "all within their limits"; exit missed != 0 }' "$results"
