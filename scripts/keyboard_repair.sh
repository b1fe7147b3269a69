#!/bin/bash
# Repairs an animation with the keyboard alone, as somebody without a mouse does, under a window manager on an X
# server of its own: opens the file, finds a frame, changes its delay, moves it, replaces its picture, takes
# that back and does it again, and saves. Prints what the saved file holds.
# Usage: keyboard_repair.sh FOLDER_OF_PROGRAMS SCRATCH_FOLDER [FOLDER_FOR_PICTURES]. Ends with 77 where a tool is missing.
set -eu

screen=1280x800 tools="openbox import convert pngcheck python3"
. "$(dirname "$0")/own_display.sh"

# What a person types, and the window that hears it; a picture of the screen at each step.
step=0
look() {
  step=$((step + 1))
  [ -z "$pictures" ] || import -window root -strip "$pictures/$step-$1.png"
}
typed() { xdotool type --delay 20 "$1"; sleep 0.3; }
pressed() {
  for key in "$@"; do
    xdotool key "$key"
    sleep 0.3
  done
}
heard_by() {
  local window
  window=$(window_of "$1")
  xdotool windowfocus --sync "$window"
  sleep 0.3
}
# Until a window of this name is gone, and the one below it has the keyboard again.
gone() {
  for try in $(seq 100); do
    xdotool search --onlyvisible --name "$1" > /dev/null 2>&1 || break
    sleep 0.1
  done
  sleep 0.5
}

# What the file holds: the delays in their order, and the color in the middle of each frame.
says() {
  gone 'broken\.png\*'  # it is saved
  rm -rf "$scratch/frames"
  "$programs/vellum" play "$scratch/broken.png" --png "$scratch/frames" --steps 4 > /dev/null
  "$programs/vellum" list --json "$scratch/broken.png" > "$scratch/list.json"
  local line=
  for i in 0 1 2 3; do
    line="$line, $(python3 -c "import json; print([e['delay_ms'] for e in json.load(open('$scratch/list.json'))['entries'] if 'delay_ms' in e][$i])")"
    line="$line $(convert "$scratch/frames/frame_0000$i.png" -depth 8 -format '%[hex:u.p{30,20}]' info:)"
  done
  echo "$1:${line#,}"
}

for color in C02020 20C020 2020C0 C0C020; do
  convert -size 60x40 "xc:#$color" "PNG24:$scratch/$color.png"
done
convert -size 60x40 'xc:#20C0C0' "PNG24:$scratch/other.png"
"$programs/vellum" build "$scratch"/{C02020,20C020,2020C0,C0C020}.png --out "$scratch/broken.png" --kind apng --delay 100
"$programs/vellum" manage "$scratch/broken.png" "$scratch/broken.png" --delay 10 --frames 2

"$programs/vellumcraft" --set ShowStartupWindow=0 --set ShowTipOfTheDay=0 --set ShowWelcomeWizard=0 &
program=$! started="$started $!"
heard_by 'Vellumcraft'

# Open.
pressed ctrl+o
heard_by '^Open'
typed "$scratch/broken.png"
pressed Return
gone '^Open'
heard_by 'broken.*Vellumcraft'
look opened

# Find the frame that is too short, and give it its time.
pressed ctrl+f
typed '10 ms'
look found
pressed Return Escape Return
heard_by '^Edit'
look editor
pressed alt+d
typed '700'
look delay
pressed Return
gone '^Edit'

# Behind the next one.
heard_by 'broken\.png\*'
pressed alt+Down
look moved

# Another picture.
pressed Return
heard_by '^Edit'
pressed alt+r
heard_by '^Replace'
typed "$scratch/other.png"
pressed Return
gone '^Replace'
heard_by '^Edit'
look replaced
pressed Return
gone '^Edit'
heard_by 'broken\.png\*'
pressed ctrl+z
look undone
pressed ctrl+s
says undone
pressed ctrl+y
heard_by 'broken\.png\*'
look redone
pressed ctrl+s
says redone
pngcheck "$scratch/broken.png"
pressed alt+f x
wait "$program" && echo "left with status $?"
