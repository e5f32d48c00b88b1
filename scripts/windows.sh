#!/bin/bash
# Cross-builds the DLLs and runs the tests under Wine; no display needed.  Usage: scripts/windows.sh [ctest option...]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all
mkdir -p "$WINEPREFIX"

need build windows
scripts/windows-deps.sh
cmake --preset windows
cmake --build --preset windows

# One server for all test programs: without it each would start and end its own. It stops with this script. A new
# prefix has its desktop already, made without the null driver, so the server is started anew after the driver is set.
# Wine's own services start with the first program and keep its output open, which therefore must be nobody's.
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
trap '"$wineserver" -k || true' EXIT
cmake/wine.sh wineboot --init >/dev/null 2>&1
cmake/wine.sh reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
"$wineserver" -k || true
"$wineserver" -p
cmake/wine.sh wineboot >/dev/null 2>&1
ctest --preset windows "$@"
