#!/bin/sh
# A session as a user has it, on an X server of its own: opens an animation, edits a chunk, saves, takes the
# edit back, plays, closes and leaves. Prints what the file says after each save, and the exit status.
# Usage: desktop_session.sh FOLDER_OF_PROGRAMS SCRATCH_FOLDER [FOLDER_FOR_PICTURES]
# Ends with 77 where a tool is missing.
set -eu

samples=$(dirname "$0")/../data/samples
screen=900x620 tools=import
. "$(dirname "$0")/own_display.sh"

gone() {
  for try in $(seq 100); do
    xdotool search --onlyvisible --name "$1" > /dev/null 2>&1 || break
    sleep 0.1
  done
  sleep 0.5  # until the window below has the focus again
}

picture() {
  [ -z "$pictures" ] || import -window root -strip "$pictures/$1.png"
}

# What the saved file says; a save takes its time.
plays() {
  for try in $(seq 50); do
    "$programs/vellum" list "$scratch/session.png" | grep "acTL ($1 loops)" && return
    sleep 0.1
  done
  echo "the file doesn't say $1" >&2
  return 1
}

"$programs/vellum" manage "$samples/welcome.png" "$scratch/session.png" --plays 3
"$programs/vellumcraft" --set StartMaximized=0 --set StickyWindowLeft=0 --set StickyWindowTop=0 \
  --set StickyWindowRight=900 --set StickyWindowBottom=620 "$scratch/session.png" &
program=$! started="$started $!"
main=$(window_of 'session.*Vellumcraft')
picture opened

# The second row is the animation control: its editor has the number of plays selected.
keys "$main" Home Down Return
editor=$(window_of '^Edit acTL')
keys "$editor" ctrl+a 7
picture editor
keys "$editor" Return
gone '^Edit acTL'
keys "$main" ctrl+s
plays 7

keys "$main" ctrl+z ctrl+s
plays 3

keys "$main" ctrl+w
viewer=$(window_of '(^View session|^Block)')
sleep 0.5
picture viewer
keys "$viewer" ctrl+w
gone '(^View session|^Block)'

# A changed document is asked about: No loses the change.
keys "$main" Home Down Return
editor=$(window_of '^Edit acTL')
keys "$editor" ctrl+a 9 Return
gone '^Edit acTL'
keys "$main" ctrl+F4
question=$(window_of '^Vellumcraft$')
picture question
keys "$question" alt+n
gone 'session.*Vellumcraft'
plays 3
keys "$main" alt+f x
wait "$program" && echo "left with status $?"
