#!/bin/bash
# Loads the module into an interpreter from a folder that holds nothing but the module and its base.
# Usage: check_require.sh <interpreter> <module> <base>
set -euo pipefail

script=$(cd "$(dirname "$0")" && pwd)/require.lua
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$2" "$3" "$folder"
cd /
LUA_CPATH="$folder/?.so" "$1" "$script"
