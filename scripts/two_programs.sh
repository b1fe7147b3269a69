#!/bin/sh
# Copies an image in one running vellumcraft, pastes it in another, and saves there: on an X server of its own.
# Prints the rows of the saved file.
# Usage: two_programs.sh FOLDER_OF_PROGRAMS SCRATCH_FOLDER. Ends with 77 where a tool is missing.
set -eu

programs=$1
scratch=$2
for tool in Xvfb xvfb-run xdotool xauth; do
  command -v $tool > /dev/null || { echo "$tool is missing" >&2; exit 77; }
done

if [ -z "${TWO_PROGRAMS_DISPLAY:-}" ]; then
  TWO_PROGRAMS_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1280x800x24" "$0" "$programs" "$scratch"
fi

export HOME="$scratch" XDG_CONFIG_HOME="$scratch/config"
unset QT_QPA_PLATFORM
first= second=
trap 'kill $first $second 2> /dev/null || true' EXIT

window_of() {
  for try in $(seq 100); do
    xdotool search --onlyvisible --name "^$1.*Vellumcraft" 2> /dev/null | head -1 | grep . && return
    sleep 0.1
  done
  echo "no window of $1" >&2
  return 1
}

# Keys go to the window that has the focus; without a window manager it is given one by one.
keys() {
  xdotool windowfocus --sync "$1"
  sleep 0.3
  shift
  for key in "$@"; do
    xdotool key "$key"
    sleep 0.3
  done
}

"$programs/vellum" new "$scratch/source.webp" --kind webp --size 60x40
"$programs/vellum" new "$scratch/target.webp" --kind webp --size 60x40
"$programs/vellumcraft" --set StartMaximized=0 "$scratch/source.webp" &
first=$!
source_window=$(window_of source)
"$programs/vellumcraft" --set StartMaximized=0 "$scratch/target.webp" &
second=$!
target_window=$(window_of target)

keys "$source_window" End ctrl+c
keys "$target_window" End ctrl+v ctrl+s
sleep 0.5
"$programs/vellum" list "$scratch/target.webp"
