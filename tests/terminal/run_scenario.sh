#!/bin/bash
# Runs a scenario on a new data folder.  Usage: run_scenario.sh TERMINAL SCENARIO [option...]
data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
"$1" --data "$data" --scenario "$2" "${@:3}" </dev/null
