#!/bin/bash
# Compares a module's exports with a list, in both directions.  Usage: check_exports.sh <module> <list>
set -euo pipefail

case $1 in
*.dll) exports=$("$OBJDUMP" -p "$1" | awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next } NF == 0 { on = 0 } on { print $NF }') ;;
*)     exports=$("$NM" -D --defined-only --format=posix "$1" | awk '{ print $1 }') ;;
esac
mapfile -t exports < <("$CXXFILT" <<<"$exports")
mapfile -t expected < <(grep -v '^#' "$2")

matches() {   # <text> <pattern>: whether the pattern fits
    # shellcheck disable=SC2053
    [[ $1 == $2 ]]
}

faults=0
declare -A met=()
for symbol in "${exports[@]}"; do
    known=
    for pattern in "${expected[@]}"; do
        matches "$symbol" "$pattern" && { known=1; met[$pattern]=1; }
    done
    [ -n "$known" ] || { echo "exported, but not expected: $symbol"; faults=1; }
done
for pattern in "${expected[@]}"; do
    [ -n "${met[$pattern]-}" ] || { echo "expected, but not exported: $pattern"; faults=1; }
done
echo "${#exports[@]} exports looked at"
exit $faults
