#!/bin/bash
# Names the files below these places that hold a planted password, as it is, in UTF-16 or in base64; ends non-zero when there
# are any. All planted passwords hold the same mark.  Usage: find_planted.sh PLACE...
mark=Plant3d
wide=$(sed 's/./&\\x00/g' <<<"$mark")
# The mark at the three places that it can have in a group of three bytes, without the characters that depend on its neighbours.
at0=$(printf %s "$mark" | base64 | cut -c1-9)
at1=$(printf x%s "$mark" | base64 | cut -c3-10)
at2=$(printf xx%s "$mark" | base64 | cut -c4-12)
found=$(LC_ALL=C grep -rlaPi "$mark|$wide" "$@"; LC_ALL=C grep -rlaE "$at0|$at1|$at2" "$@")
[ -z "$found" ] || { sort -u <<<"$found"; exit 1; }
