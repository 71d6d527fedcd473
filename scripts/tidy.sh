#!/bin/bash
# Runs clang-tidy over the sources of the module, the command and the bridges.
# Usage: scripts/tidy.sh BUILD_FOLDER
set -euo pipefail
git ls-files 'TarvoBased/*.cpp' 'avbase/*.cpp' 'effects/*.cpp' 'dvd_effects/*.cpp' 'host/*.cpp' 'bridges/*.cpp' |
    xargs -P "$(nproc)" -n 1 clang-tidy-14 --quiet -p "$1" 2>&1 |
    { grep -v ' warnings\? generated\.$' || true; }
