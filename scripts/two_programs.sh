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
  TWO_PROGRAMS_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1280x800x24 -noreset" "$0" "$programs" "$scratch"
fi

export HOME="$scratch" XDG_CONFIG_HOME="$scratch/config"
unset QT_QPA_PLATFORM
first= second=
trap 'kill $first $second 2> /dev/null || true' EXIT

. "$(dirname "$0")/window_keys.sh"

"$programs/vellum" new "$scratch/source.webp" --kind webp --size 60x40
"$programs/vellum" new "$scratch/target.webp" --kind webp --size 60x40
"$programs/vellumcraft" --set StartMaximized=0 "$scratch/source.webp" &
first=$!
source_window=$(window_of '^source.*Vellumcraft')
"$programs/vellumcraft" --set StartMaximized=0 "$scratch/target.webp" &
second=$!
target_window=$(window_of '^target.*Vellumcraft')

keys "$source_window" End ctrl+c
keys "$target_window" End ctrl+v ctrl+s
sleep 0.5
"$programs/vellum" list "$scratch/target.webp"
