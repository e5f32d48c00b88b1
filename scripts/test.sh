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
status=0
"${fixed[@]}" ctest --preset "$preset" "$@" || status=$?

# No test may say a password that was planted in it.
said=build/$preset/Testing/Temporary
if planted=$([ ! -d "$said" ] || tests/terminal/find_planted.sh "$said"); then
    echo "No planted password is in the output of the tests."
else
    printf 'FAILED: a planted password is in the output of the tests:\n%s\n' "$planted"
    status=1
fi
exit "$status"
