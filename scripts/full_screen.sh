#!/bin/bash
# Plays a small animation on a full screen under a window manager, on an X server of its own: whether it fills the
# screen, whether the controls come and go, and whether Escape leaves. Prints what it saw, a line each; writes
# pictures of the screen to the scratch folder.
# Usage: full_screen.sh FOLDER_OF_PROGRAMS SCRATCH_FOLDER. Ends with 77 where a tool is missing.
set -eu

screen=900x640 tools="openbox import convert"
. "$(dirname "$0")/own_display.sh"

# A picture of the screen, and the color of one of its pixels.
look() {
  import -window root "$scratch/$1.png"
}
color_at() {
  convert "$scratch/$1.png" -depth 8 -format "%[hex:u.p{$2,$3}]" info:
}

convert -size 60x40 xc:'#20C040' "$scratch/one.png"
"$programs/vellum" build "$scratch/one.png" "$scratch/one.png" --out "$scratch/anim.png" --kind apng --delay 1000
"$programs/vellumcraft" --set StartMaximized=0 --view "$scratch/anim.png" &
program=$! started="$started $!"
window=$(window_of '^View anim')
sleep 0.5
xdotool mousemove 450 200
xdotool key --window "$window" --clearmodifiers F11
sleep 1
xdotool mousemove_relative 5 5
sleep 0.3
look moved
sleep 3
look rested
echo "middle $(color_at rested 450 320)"
echo "across $(color_at rested 20 320)"
echo "surround $(color_at rested 450 4)"
echo "bottom $(color_at rested 450 630)"
[ "$(color_at moved 450 630)" = "$(color_at rested 450 630)" ] && echo "controls stay away" || echo "controls come"
xdotool key Escape
sleep 1
look left
[ "$(color_at left 20 320)" = "$(color_at rested 20 320)" ] && echo "still full" || echo "left"
xdotool search --onlyvisible --name '^View anim' > /dev/null && echo "still open"
