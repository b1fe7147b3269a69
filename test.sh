#!/usr/bin/env bash
# Sets up, builds and runs all tests: ./test.sh [ctest options]
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
"$here/scripts/setup.sh"
cd "$here"
cmake --preset release >/dev/null
cmake --build build/release
# One more at a time than there are processors: some tests wait for windows.
ctest --preset release -j "$(($(nproc) + 1))" "$@"
