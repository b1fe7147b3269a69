#!/bin/sh
# Makes docs/pictures/at-work.png, the moving picture of the README, anew: windows of the program, one after the other.
# Usage: readme_film.sh FOLDER_OF_PROGRAMS [OUT]; needs no display.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
programs=$1
out=${2:-$here/../docs/pictures/at-work.png}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work" XDG_RUNTIME_DIR="$work" XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" QT_QPA_PLATFORM=offscreen
cp "$here/../data/samples/welcome.png" "$work/boat.png"

shown=0
window() {  # OPTION...
  "$programs/vellumcraft" "$@" --size 1200x760 --screenshot "$(printf '%s/%02d.png' "$work" "$shown")" "$work/boat.png"
  shown=$((shown + 1))
}

# Frame after frame is selected; the preview, the film strip and the fields follow.
for row in 6 7 8 10 12 14 16 18 20 22 24; do
  window --show 805@$row
done
# The same in another look.
for row in 24 26; do
  window --set "ThemeCurrent=THEME_Dark_x64.so" --show 805@$row
done
# 805 is "Next": with one document it changes nothing, and so the main window itself is seen.
vellum() { "$programs/vellum" --quiet --set AutoUpdateTime=0 --set IdentifyFiles=0 "$@"; }
for picture in "$work"/[0-9]*.png; do
  vellum resize "$picture" "$picture" --percent 60
done
vellum build -o "$work/film.png" --delay 500 "$work"/[0-9]*.png
vellum supercompress "$work/film.png" "$out" --all
