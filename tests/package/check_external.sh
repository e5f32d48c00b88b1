#!/bin/bash
# Builds and runs a project of its own that takes this one in with add_subdirectory.
# Usage: check_external.sh <cmake> <source folder> <build folder>
set -euo pipefail

"$1" -S "$(dirname "$0")/external" -B "$3" -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUADUI_FOLDER="$2" -DLUADUI_WERROR=ON
"$1" --build "$3"
"$3/external"
