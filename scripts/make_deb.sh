#!/usr/bin/env bash
# Builds the Debian package: scripts/make_deb.sh [FOLDER]. It is written to FOLDER (build/package without one).
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
out=$(realpath -m "${1:-$here/build/package}")
"$here/scripts/setup.sh"
cd "$here"
cmake --preset release >/dev/null
cmake --build build/release --target vellum vellumcraft vellum_man_page vellumcraft_man_page program_icons
mkdir -p "$out"
# The same sources give the same package, byte for byte.
released=$(sed -n 's/^set(VELLUM_RELEASE_DATE \([0-9-]*\)).*/\1/p' CMakeLists.txt)
SOURCE_DATE_EPOCH=$(date -u -d "$released" +%s)
export SOURCE_DATE_EPOCH
cpack --config build/release/CPackConfig.cmake -B "$out" >"$out/cpack.log" || { cat "$out/cpack.log" >&2; exit 1; }
rm -rf "$out/_CPack_Packages"
ls "$out"/*.deb
