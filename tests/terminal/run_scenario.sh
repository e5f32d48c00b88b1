#!/bin/bash
# Runs a scenario on a new data folder, then searches everything that it left - files, logs, standard output - for the
# passwords that it planted, which all hold the same mark.  Usage: run_scenario.sh TERMINAL SCENARIO [option...]
mark=Plant3d
data=$(mktemp -d) said=$(mktemp) logs=$(dirname "$1")/log
trap 'rm -rf "$data" "$said"' EXIT
"$1" --data "$data" --scenario "$2" "${@:3}" </dev/null 2>&1 | tee "$said"
code=${PIPESTATUS[0]}
places=("$data" "$said")
[ -d "$logs" ] && places+=("$logs")
# A broker that got no encrypted password at all would prove nothing.
grep -qaE 'REQTYPE=1808 .*\|[A-Za-z0-9+/]{171}=\|' "$data/broker/traffic.log" || { echo "FAILED: no encrypted password reached the broker"; code=1; }
found=$(grep -rlaiF "$mark" "${places[@]}")
[ -z "$found" ] || { printf 'FAILED: a planted password is in:\n%s\n' "$found"; code=1; }
echo "Searched for planted passwords: $(find "${places[@]}" -type f | wc -l) files, found in $(grep -c . <<<"$found")."
exit "$code"
