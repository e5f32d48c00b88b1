#!/bin/bash
# Runs a scenario on a new data folder, then searches everything that it left - files, logs, what the broker got, trace
# records among it, standard output - for the passwords that it planted.  Usage: run_scenario.sh TERMINAL SCENARIO [option...]
data=$(mktemp -d) said=$(mktemp) logs=$(dirname "$1")/log
trap 'rm -rf "$data" "$said"' EXIT
"$1" --data "$data" --scenario "$2" "${@:3}" </dev/null 2>&1 | tee "$said"
code=${PIPESTATUS[0]}
places=("$data" "$said")
[ -d "$logs" ] && places+=("$logs")
# A broker that got no encrypted password at all, or no trace record, would prove nothing.
for seen in 'REQTYPE=1808 .*\|[A-Za-z0-9+/]{171}=\|' 'REQTYPE=1807 .*\|[A-Za-z0-9+/]{171}=\|' 'REQTYPE=1466 .*MODULE_ACCOUNTMANAGER' 'REQTYPE=1466 .*[|]T1[|]'; do
    grep -qaE "$seen" "$data/broker/traffic.log" || { echo "FAILED: the broker never got $seen"; code=1; }
done
found=$("$(dirname "$0")/find_planted.sh" "${places[@]}") || code=1
[ -z "$found" ] || printf 'FAILED: a planted password is in:\n%s\n' "$found"
echo "Searched for planted passwords: $(find "${places[@]}" -type f | wc -l) files, found in $(grep -c . <<<"$found")."
exit "$code"
