#!/bin/sh
# Makes the pictures of windows that the guide and the README show, anew, with the programs themselves.
# Usage: guide_pictures.sh FOLDER_OF_PROGRAMS [FOLDER_FOR_PICTURES]; needs no display.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
programs=$(cd "$1" && pwd)
pictures=${2:-$here/../docs/pictures}
mkdir -p "$pictures"
pictures=$(cd "$pictures" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work" XDG_RUNTIME_DIR="$work" XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" QT_QPA_PLATFORM=offscreen

vellum() { "$programs/vellum" --set AutoUpdateTime=0 --set IdentifyFiles=0 "$@"; }

cp "$here/../data/samples/welcome.png" "$work/apng.png"
vellum convert "$work/apng.png" "$work/mng.mng" --kind mng
vellum edit "$work/mng.mng" "$work/mng.mng" --insert BACK@1 --insert TERM@1 --insert SHOW@8 --insert MOVE@8
vellum convert "$work/apng.png" "$work/webp.webp" --kind webp
vellum play "$work/apng.png" --png "$work/frames" --steps 1 > "$work/steps"
vellum convert "$work/frames/frame_00000.png" "$work/still.png" --color palette
vellum edit "$work/still.png" "$work/still.png" --insert tRNS@1 --insert bKGD@1 --insert gAMA@1 --insert tIME@1 \
  --insert tEXt@1:Title=Squares --insert abCd@1:hex:56656C6C756D

# The row of the first entry that a pattern finds.
row() { "$programs/vellum" list "$work/$1" | sed -n "s/^ *\([0-9]*\): .*$2.*/\1/p" | head -1; }

take() {  # NAME COMMAND FILE [ROW [BUTTON]]
  mkdir -p "$(dirname "$pictures/$1.png")"
  "$programs/vellumcraft" --set WarnWatermark=0 --screenshot "$pictures/$1.png" --show "$2@${4:-0}" --press "${5:-}" "$work/$3"
}

# The editor of an entry is command 205.
while read -r name file pattern; do
  take "editors/$name" 205 "$file" "$(row "$file" "$pattern")"
done << 'ROWS'
IHDR still.png IHDR
PLTE still.png PLTE
tRNS still.png tRNS
bKGD still.png bKGD
gAMA still.png gAMA
tIME still.png tIME
tEXt still.png tEXt
unknown still.png abCd
IEND still.png IEND
acTL apng.png acTL
IDAT apng.png IDAT
MHDR mng.mng MHDR
PNGI mng.mng IMAGE
LOOP mng.mng LOOP
ENDL mng.mng ENDL
TERM mng.mng TERM
BACK mng.mng BACK
SHOW mng.mng SHOW
MOVE mng.mng MOVE
WEBH webp.webp HEADER
ROWS

while read -r name command file; do
  take "editors/$name" "$command" "$file"
done << 'ROWS'
mono 258 apng.png
still 270 apng.png
reconstruct 316 apng.png
resize 310 apng.png
extract 312 apng.png
manage 62 apng.png
properties 118 apng.png
ROWS

# Operations, with what a person typed the last time. Names in forms stand without a folder.
cd "$work"
config="$work/config/Tarnwick"
mkdir -p "$config"
printf '%s\n' "$work/apng.png" "$work/frames/frame_00000.png" "$work/webp.webp" > "$config/CombineFiles.txt"
printf 'DlgItem_000001=TEDT,Frame %%n of %%t\nDlgItem_000011=CHKB,1\n' > "$config/TextOverlayState.txt"
printf 'A paper boat, far from any shore\n' > "$config/EditCaptionHistory.txt"
printf 'Paper boat\n' > "$config/EditWatermarkHistory.txt"
vellum resize "$work/apng.png" "$work/small.png" --percent 30
vellum frame "$work/small.png" "$work/framed.png" --thickness 3 --color FFFFFF
vellum titles "$work/apng.png" "$work/credits.png" --title "Paper boat" --no-show-credits
printf 'DlgItem_000002=TEDT,credits.png\n' > "$config/MergeState.txt"
printf 'DlgItem_000001=TEDT,framed.png\nDlgItem_000002=CBOX,8\n' > "$config/OverlayState.txt"
take operations/move 320 apng.png "$(row apng.png IMAGE)"
while read -r name command; do
  take "operations/$name" "$command" apng.png
done << 'ROWS'
merge 304
adjust 330
balance 311
crop 309
depopulate 322
flip 308
frame 324
overlay 317
reverse 314
shadow 319
text 326
caption 328
watermark 327
tile 323
trim 325
social 274
combine 117
ROWS

# Where documents are looked for: somebody's folder, among so many that the tree shows no others.
people=${TMPDIR:-/tmp}/anna
mkdir "$people"
trap 'rm -rf "$work" "$people"' EXIT
for name in Apples Badges Banners Bees Birds Bridges Cats City Clouds Cups Drawings Family Ferns Garden Hills Icons Kites Lakes Lamps Maps \
  Masks Portraits Rain Roads Roofs Sails Signs Snow Stars Trains Trees Wedding Wheat Wildlife Windows Winds Winter Woods; do
  mkdir -p "$people/Pictures/$name"
done
cp "$work/apng.png" "$people/Pictures/Lakes/boat.png"
cp "$work/framed.png" "$work/still.png" "$work/small.png" "$work/mng.mng" "$work/webp.webp" "$people/Pictures/Lakes"
printf 'DocumentBrowserPath=%s\n' "$people/Pictures/Lakes" > "$config/Vellumcraft 15.ini"
take documentbrowser 117 apng.png 0 Add

# Windows that make animations of files: what they held the last time.
vellum play "$work/apng.png" --png "$work/frames" --steps 60 > "$work/steps"
ls "$work"/frames/frame_000[0-5]9.png > "$config/TransitionImages.txt"
cp "$config/TransitionImages.txt" "$config/PhotoStackImages.txt"
printf 'SpinFile=%s\n' "$work/frames/frame_00059.png" > "$config/Vellumcraft 15.ini"
while read -r name command; do
  take "$name" "$command" apng.png
done << 'ROWS'
transition 251
banner 250
button 257
photostack 273
ledsign 253
statuspanel 271
throbber 272
titles 329
ROWS
take spin 252 apng.png

# What goes out: pages, matrices, favorites, paper.
ls "$work"/frames/frame_000[0-5]9.png > "$config/GraphicMatrixImages.txt"
ls "$work"/frames/frame_000[0-5]9.png "$work/apng.png" "$work/mng.mng" > "$config/WebGalleryItems.txt"
vellum favorites add Favorites "$work/apng.png" "$work/webp.webp" "$work"/frames/frame_000[0-2]9.png
vellum favorites add Drafts "$work/mng.mng"
take matrix 332 apng.png
take webgallery 275 apng.png
take favorites 403 apng.png
take print 119 apng.png
take supercompress 111 apng.png
while read -r name command; do
  take "exchange/$name" "$command" apng.png
done << 'ROWS'
movie 112
swf 115
ilg 116
gif 122
ROWS
vellum resize "$work/frames/frame_00059.png" "$work/large.png" --percent 200
take protect 315 large.png

"$programs/vellumcraft" --size 1366x768 --screenshot "$pictures/main-window.png" --show 805@12 "$work/apng.png"

# Setup, page by page.
page=0
for name in files display application; do
  "$programs/vellumcraft" --set "SetupPageIndex=$page" --set MDIClientImage=/home/me/Pictures/ground.png --screenshot "$pictures/setup-$name.png" --show 54
  page=$((page + 1))
done

# The window light and dark, on a usual screen and on a small one.
mkdir -p "$pictures/window"
for theme in Light Dark; do
  for size in 1366x768 800x600; do
    name=$(printf '%s' "$theme" | tr 'A-Z' 'a-z')-$size
    "$programs/vellumcraft" --set "ThemeCurrent=THEME_${theme}_x64.so" --size "$size" \
      --screenshot "$pictures/window/$name.png" --show 805@12 "$work/apng.png"
  done
done

# The themes, with a window and with a dialog.
mkdir -p "$pictures/themes"
for theme in Light Dark "High Contrast"; do
  name=$(printf '%s' "$theme" | tr 'A-Z ' 'a-z_')
  "$programs/vellumcraft" --set "ThemeCurrent=THEME_${theme}_x64.so" --screenshot "$pictures/themes/$name.png" "$work/apng.png"
  "$programs/vellumcraft" --set "ThemeCurrent=THEME_${theme}_x64.so" --screenshot "$pictures/themes/${name}_dialog.png" \
    --show 328 "$work/apng.png"
done
