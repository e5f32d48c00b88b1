#!/bin/bash
# Runs every fuzzer on its corpus.  Usage: scripts/fuzz.sh [seconds for each, 30] [part of a fuzzer's name]
# What it finds lies in build/fuzz/found/; a repaired case belongs into fuzz/<folder>/corpus/<fuzzer>/.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

seconds=${1:-30}
filter=${2-}

need build test fuzz
cmake --preset fuzz
cmake --build --preset fuzz

mkdir -p build/fuzz/found
failed=()
for corpus in fuzz/*/corpus/*"$filter"*/; do
    name=$(basename "$corpus")
    [ -x "build/fuzz/$name" ] || continue
    echo "== $name: $seconds s"
    mkdir -p "build/fuzz/grown/$name"
    "build/fuzz/$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/found/$name-" "build/fuzz/grown/$name" "$corpus" 2>"build/fuzz/$name.log" ||
        failed+=("$name")
    grep -E '^stat::number_of_executed_units|ERROR|SUMMARY' "build/fuzz/$name.log" || true
done
[ ${#failed[@]} -eq 0 ] || { echo "Faults found by: ${failed[*]} (see build/fuzz/*.log)"; exit 1; }
