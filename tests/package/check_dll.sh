#!/bin/bash
# Checks the protections and the version resource of a DLL.  Usage: check_dll.sh <dll> <version>
set -euo pipefail

faults=0
headers=$("$OBJDUMP" -p "$1")
for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
    grep -qw "$flag" <<<"$headers" || { echo "missing flag: $flag"; faults=1; }
done
# Without relocations the loader cannot move it, whatever the flags say.
grep -qE '^Entry 5 [0-9a-f]+ 0*[1-9a-f][0-9a-f]* Base Relocation' <<<"$headers" || { echo "no relocations"; faults=1; }

resources=$("$WINDRES" -J coff -O rc "$1")
for value in "VALUE \"ProductVersion\", \"$2\"" "VALUE \"OriginalFilename\", \"$(basename "$1")\"" "FILEVERSION ${2//./, }"; do
    grep -qF "$value" <<<"$resources" || { echo "version resource lacks: $value"; echo "$resources"; faults=1; }
done
exit $faults
