#!/usr/bin/env bash
# Makes the moving pictures of what is made from nothing, for the guide, anew, with the program alone:
#   scripts/generator_pictures.sh [VELLUM [OUT]]
set -euo pipefail
cd "$(dirname "$0")/.."
program=${1:-build/release/bin/vellum}
out=${2:-docs/pictures/generators}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config"
mkdir -p "$out"
vellum() { "$program" --quiet "$@" 2> "$work/told" || { cat "$work/told" >&2; exit 1; }; }


banner() { vellum banner -o "$out/banner-$1.png" --type "$1" --font Sans "${@:2}"; }
banner embossed --text "Summer Sale" --rolling --delay 60
banner glow --text "Open late" --delay 60 --pause 600
banner scanners --text "Scanning" --delay 50 --pause 600
banner simple --text "Hello, world" --rolling --delay 50
banner soft --text "Softly now" --rolling --delay 50
banner teletype --text "Dear reader" --delay 120 --pause 1500
banner texture --texture fire --text "Too hot" --rolling --delay 50
banner wave --text "Making waves" --delay 60

# All textures, as letters that are filled with them.
textures=(brick canvas checker clouds fire gold granite grass marble metal paper rainbow sand steel water wood)
filled=()
for texture in "${textures[@]}"; do
  vellum banner -o "$work/t.mng" --type texture --texture "$texture" --text "${texture^}" --cells 2 --font Sans --pointsize 24 \
    --offset 2
  vellum still "$work/t.mng" "$work/$texture.png" --frame 2 --opaque
  filled+=("$work/$texture.png")
done
vellum build "${filled[@]}" -o "$work/all.png"
vellum strip "$work/all.png" "$out/textures.png" --columns 4

vellum button -o "$out/button-states.png" --font Sans --text "Download" --states
vellum button -o "$out/button-round.png" --font Sans --text "Order now" --states --material-color 3a7bd5 --text-color ffffff \
  --roundness 100 --dropshadow --depth 3 --padding 16 --text-high-factor 10

led() { vellum led -o "$out/led-$1.png" "${@:2}"; }
led left --text "Open {green}24 hours{pause} {yellow}every day" --characters 12 --jumpby 2
led smooth --text "Small dots, {cyan}smooth" --characters 14 --sign-compact --smooth-scroll --jumpby 2
led type --text "Typing..." --effect type --characters 10 --delay 150

panel() { vellum panel -o "$out/panel-$1.png" "${@:2}"; }
panel type --text "Status: ready"
panel lines --text 'Gate {red}B12{default}\nboarding now' --effect line-by-line --delay 800 --columns 14
panel up --text 'The quick\nbrown fox\njumps' --effect scroll-up --columns 12 --delay 60

for type in spokes arc dots pulsar strings; do
  vellum throbber -o "$out/throbber-$type.png" --type "$type" --size 72 --inc-angle 15 --delay 50
done

# Photographs: parts of the sample, in colors of their own.
number=0
for balance in "--red 0" "--red 60 --blue -60" "--green 50 --red -40" "--blue 70 --red -20"; do
  number=$((number + 1))
  vellum reverse data/samples/welcome.png "$work/last.png"
  vellum still "$work/last.png" "$work/still.png" --frame 1 --opaque
  vellum build "$work/still.png" -o "$work/one.png"
  # shellcheck disable=SC2086
  vellum balance "$work/one.png" "$work/photo$number.png" $balance
done
for way in fly fade drop; do
  vellum photostack -o "$out/photostack-$way.png" --way "$way$([ "$way" = drop ] || echo -in)" --seed 5 --size 110 --scatter 20 --steps 6 \
    --back-color 5a6b7b "$work"/photo[1-4].png
done
vellum titles data/samples/welcome.png "$out/titles.png" --title "A Wave" --credits-text $'#Drawn by\nnobody in particular' \
  --large-font Sans --small-font Sans --large-size 22 --small-size 13 --ground frame --pause 800 --steps 12
du -cb "$out"/*.png | tail -1
