#!/bin/bash
# Builds the sample terminal and runs its scenario on a new data folder; ends non-zero when a step fails, or when
# a password that the scenario planted is found in what it left.
#
# Usage: scripts/demo.sh [--interactive] [--preset NAME] [terminal option...]
#   --interactive    a prompt instead of the scenario; keeps its data folder build/demo-<preset>/terminal-data
#   --preset NAME    release (default) or asan
# Further options go to the terminal, for instance --securities FILE or --securities-count N.
set -euo pipefail
here=$PWD
cd "$(dirname "$0")/.."
. scripts/packages.sh

preset=release interactive= options=()
while [ $# -gt 0 ]; do
    case $1 in
    --interactive) interactive=1 ;;
    --preset) preset=${2:?--preset needs a name}; shift ;;
    -h | --help) sed -n '2,8s/^# \{0,1\}//p' "$0"; exit ;;
    --securities) options+=("$1" "$(cd "$here" && realpath -m "${2:?--securities needs a file}")"); shift ;;
    *) options+=("$1") ;;
    esac
    shift
done

need build demo
log=build/$preset-demo.log
mkdir -p build
echo "Building the preset $preset (log: $log)"
{ cmake --preset "$preset" -DLUADUI_TESTS=OFF -DLUADUI_BENCH=OFF -B "build/demo-$preset" &&
  cmake --build "build/demo-$preset" --target terminal; } >"$log" 2>&1 || { tail -40 "$log"; exit 1; }
home=build/demo-$preset

if [ -n "$interactive" ]; then
    exec "$home/terminal" --data "$home/terminal-data" "${options[@]}"
fi
exec tests/terminal/run_scenario.sh "$home/terminal" "$home/scripts/demo.lua" "${options[@]}"
