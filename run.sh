#!/usr/bin/env bash
# Builds the command-line tool if needed and runs it: by default on the bundled sample message.
#   ./run.sh                      show samples/welcome.eml
#   ./run.sh [parcelet arguments] e.g. ./run.sh props samples/welcome.eml
set -euo pipefail
cd "$(dirname "$0")"
./tools/install-deps.sh
[ -f build/build.ninja ] || cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build --target parcelet_cli >/dev/null
[ $# -gt 0 ] || set -- samples/welcome.eml
exec build/tools/parcelet "$@"
