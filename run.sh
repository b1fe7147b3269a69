#!/usr/bin/env bash
# Sets up, builds and starts the desktop program: ./run.sh [FILE]
# Without a file it opens a sample; without a display it writes a screenshot and prints the file's chunk list.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
file=${1:-$here/data/samples/welcome.png}
bin=$here/build/release/bin

"$here/scripts/setup.sh"
(cd "$here" && cmake --preset release >/dev/null && cmake --build build/release --target vellumcraft vellum)

if [[ -n ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
  exec "$bin/vellumcraft" "$file"
fi

picture=$PWD/vellumcraft-screenshot.png
echo "There is no display: starting Vellumcraft under Xvfb."
QT_QPA_PLATFORM=xcb xvfb-run -a -s '-screen 0 1280x800x24' "$bin/vellumcraft" --screenshot "$picture" "$file"
echo "Screenshot of the window: $picture"
echo
"$bin/vellum" list "$file"
