#!/usr/bin/env bash
# Makes the film strips of the guide's page about transitions anew, with the program alone:
#   scripts/film_strips.sh [VELLUM [OUT]]
set -euo pipefail
cd "$(dirname "$0")/.."
vellum=${1:-build/release/bin/vellum}
out=${2:-docs/pictures/transitions}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"

# Two pictures of 72 x 48: the sample as it ends, and the same turned over in other colors.
"$vellum" --quiet reverse data/samples/welcome.png "$work/last.png"
"$vellum" --quiet crop "$work/last.png" "$work/leaf.png" --rect 16,16,192,100
"$vellum" --quiet resize "$work/leaf.png" "$work/first.png" --width 72 --height 48
"$vellum" --quiet flip "$work/first.png" "$work/turned.png" --mode v
"$vellum" --quiet balance "$work/turned.png" "$work/second.png" --red 30 --green -25 --blue -100

effects=(blocks dissolve horizontal-spinner-down horizontal-spinner-up interlace horizontal-raster horizontal-split none
  radar sandstorm tile vertical-raster roll-down roll-left roll-right roll-up vertical-spinner-clockwise
  vertical-spinner-counterclockwise vertical-split wipe-in-from-bottom wipe-in-from-left wipe-in-from-right
  wipe-in-from-top)
for effect in "${effects[@]}"; do
  "$vellum" --quiet transition -o "$work/film.png" --effect "$effect" --override 2=none --seed 7 --horizontal-step 9 \
    --vertical-step 6 --block-spacing 32 --raster-size 6 --tile-block-size 15 --sandstorm-block-size 432 \
    --dissolve-step 32 --radar-step-angle 45 "$work/first.png" "$work/second.png"
  "$vellum" --quiet strip "$work/film.png" "$out/$effect.png" --columns 10
done
du -cb "$out"/*.png | tail -1
