#!/bin/sh
# Copies an image in one running vellumcraft, pastes it in another, and saves there: on an X server of its own.
# Prints the rows of the saved file.
# Usage: two_programs.sh FOLDER_OF_PROGRAMS SCRATCH_FOLDER. Ends with 77 where a tool is missing.
set -eu

screen=1280x800 tools=
. "$(dirname "$0")/own_display.sh"

"$programs/vellum" new "$scratch/source.webp" --kind webp --size 60x40
"$programs/vellum" new "$scratch/target.webp" --kind webp --size 60x40
"$programs/vellumcraft" --set StartMaximized=0 "$scratch/source.webp" &
first=$! started="$started $!"
source_window=$(window_of '^source.*Vellumcraft')
"$programs/vellumcraft" --set StartMaximized=0 "$scratch/target.webp" &
second=$! started="$started $!"
target_window=$(window_of '^target.*Vellumcraft')

keys "$source_window" End ctrl+c
keys "$target_window" End ctrl+v ctrl+s
sleep 0.5
"$programs/vellum" list "$scratch/target.webp"
