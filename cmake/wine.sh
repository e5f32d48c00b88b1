#!/bin/sh
# Runs a Windows program under Wine with the prefix that scripts/windows.sh prepares.
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX="${WINEPREFIX:-$root/build/wine}" WINEDEBUG="${WINEDEBUG:--all}" WINEDLLOVERRIDES="mscoree,mshtml="
for wine in /usr/lib/wine/wine64 wine64 wine; do
    command -v "$wine" >/dev/null && exec "$wine" "$@"
done
echo "wine.sh: no Wine found" >&2
exit 127
