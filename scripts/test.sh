#!/bin/bash
# Builds and runs the tests natively.  Usage: scripts/test.sh [release|asan|tsan] [ctest option...]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

preset=release
case ${1-} in release | asan | tsan) preset=$1; shift ;; esac

need build test demo
[ "$preset" = release ] && need bench
cmake --preset "$preset"
cmake --build --preset "$preset"

# The thread sanitizer does not start where the system spreads addresses wider than it can follow.
fixed=()
[ "$preset" = tsan ] && setarch -R true 2>/dev/null && fixed=(setarch -R)
"${fixed[@]}" ctest --preset "$preset" "$@"
