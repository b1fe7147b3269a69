#!/bin/bash
# Keeps pictures of the main windows as people with other screens, desktops and languages have them: a small screen,
# scales, color schemes, right to left, no icons of a desktop, and what a start without a display says. Somebody looks at
# them; contact sheets show each look on one page.
# Usage: looks.sh FOLDER_OF_PROGRAMS FOLDER_FOR_PICTURES [LOOK...]; needs Xvfb, and for the sheets ImageMagick.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
programs=$1
pictures=$2
shift 2
for tool in Xvfb xvfb-run montage; do
  command -v $tool > /dev/null || { echo "$tool is missing" >&2; exit 77; }
done
if [ -z "${LOOKS_DISPLAY:-}" ]; then
  LOOKS_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1920x1080x24 -noreset" "$0" "$programs" "$pictures" "$@"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset QT_QPA_PLATFORM
export HOME="$work" XDG_RUNTIME_DIR="$work" XDG_STATE_HOME="$work/state" XDG_CACHE_HOME="$work/cache"
cp "$here/../data/samples/welcome.png" "$work/welcome.png"
mkdir -p "$work/folder" "$pictures"
"$programs/vellum" play "$work/welcome.png" --png "$work/folder" --steps 12 > "$work/steps"

# The colors of a desktop, where Qt looks for them: window, its text, base, its text, button, highlight, its text, link.
scheme() {  # NAME WINDOW TEXT BASE TEXT BUTTON HIGHLIGHT TEXT LINK
  mkdir -p "$work/$1"
  {
    for group in "Window $2 $3" "View $4 $5" "Button $6 $3" "Selection $7 $8" "Tooltip $2 $3"; do
      set -- "$@" $group
      printf '[Colors:%s]\nBackgroundNormal=%s\nForegroundNormal=%s\nForegroundLink=%s\nForegroundVisited=%s\n' \
        "${@: -3}" "$9" "$9"
      printf 'BackgroundAlternate=%s\nForegroundInactive=%s\n\n' "${@: -2}"
    done
    printf '[General]\nfont=DejaVu Sans,10,-1,5,50,0,0,0,0,0\n'
  } > "$work/$1/kdeglobals"
}
scheme kde-light 239,240,241 35,38,41 255,255,255 35,38,41 252,252,252 61,174,233 255,255,255 41,128,185
scheme kde-dark 42,46,50 252,252,252 27,30,32 252,252,252 49,54,59 61,174,233 252,252,252 29,153,243
scheme gnome-dark 36,36,36 255,255,255 30,30,30 255,255,255 56,56,56 53,132,228 255,255,255 120,174,237
scheme high-contrast 0,0,0 255,255,255 0,0,0 255,255,255 0,0,0 255,255,0 0,0,0 0,255,255

# Windows: name, command and row, what the window shows.
windows='main 805@12
setup 54
resize 310
manage 62
wizard 59
image 205@12
batch 331
properties 118
text 326'

# Looks: name, size of the main window, and what the program is started with.
looks="plain 1366x768
small 800x600
scale-1.25 1366x768 QT_SCALE_FACTOR=1.25
scale-1.5 1280x720 QT_SCALE_FACTOR=1.5
scale-2 960x540 QT_SCALE_FACTOR=2
scale-3 640x360 QT_SCALE_FACTOR=3
kde-light 1366x768 XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5 QT_QPA_PLATFORMTHEME=kde
kde-dark 1366x768 XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5 QT_QPA_PLATFORMTHEME=kde
gnome-dark 1366x768 XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5 QT_QPA_PLATFORMTHEME=kde
high-contrast 1366x768 XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5 QT_QPA_PLATFORMTHEME=kde
right-to-left 1366x768 REVERSE=-reverse
no-icons 1366x768 XDG_DATA_DIRS=$work/none"

take() {  # LOOK SIZE WINDOW COMMAND [NAME=VALUE...]
  local look=$1 size=$2 window=$3 command=$4
  shift 4
  mkdir -p "$work/$look" "$pictures/$look"
  env XDG_CONFIG_HOME="$work/$look" "$@" bash -c 'exec "$0" ${REVERSE:-} "$@"' "$programs/vellumcraft" \
    --set "NewAnimationWizardPath=$work/folder" --set "BatchProcessorPath=$work/folder" --size "$size" \
    --screenshot "$pictures/$look/$window.png" --show "$command" "$work/welcome.png" 2> "$work/said" || { cat "$work/said" >&2; return 1; }
}

echo "$looks" | while read -r look size values; do
  case " $* " in "  " | *" $look "*) ;; *) continue ;; esac
  echo "$windows" | while read -r window command; do
    take "$look" "$size" "$window" "$command" ${values:-A=} < /dev/null || echo "$look $window: no picture" >&2
  done
  montage -label '%t' "$pictures/$look"/*.png -tile 2x -geometry '900x>+6+6' "$pictures/$look.png"
  echo "$look: $(ls "$pictures/$look" | wc -l) windows"
done

# Neither X nor Wayland: one line, and not a crash.
status=0
env -u DISPLAY -u WAYLAND_DISPLAY "$programs/vellumcraft" "$work/welcome.png" 2> "$work/said" || status=$?
echo "no display: status $status, $(cat "$work/said")"
status=0
env DISPLAY=:12345 "$programs/vellumcraft" "$work/welcome.png" 2> "$work/said" || status=$?
echo "no such display: status $status, $(cat "$work/said")"
