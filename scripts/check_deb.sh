#!/usr/bin/env bash
# Installs the Debian package into a fresh system and starts both programs there: scripts/check_deb.sh PACKAGE.deb [FOLDER]
# Needs root, debootstrap and the network. FOLDER gets the system (a temporary one, removed again, without it) and what
# the programs wrote.
set -euo pipefail

deb=$(realpath "$1")
folder=${2:-$(mktemp -d)}
[[ $# -ge 2 ]] || trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder"
root=$folder/root
suite=bookworm
mirror=http://deb.debian.org/debian

if [[ ! -e $root/etc/debian_version ]]; then
  debootstrap --variant=minbase "$suite" "$root" "$mirror" >"$folder/debootstrap.log" || {
    tail -5 "$folder/debootstrap.log" >&2
    exit 1
  }
fi
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d" && chmod +x "$root/usr/sbin/policy-rc.d"
cp /etc/resolv.conf "$root/etc/resolv.conf"
cp "$deb" "$root/tmp/vellumcraft.deb"

inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive "$@"; }
step() {
  printf -- '--- %s\n' "$*"
  inside "$@"
}

inside apt-get -qq update
inside apt-get -qq install -y --no-install-recommends /tmp/vellumcraft.deb >"$folder/install.log" 2>&1 || {
  tail -20 "$folder/install.log" >&2
  exit 1
}
step vellum --version
step vellumcraft --version
step vellum list /usr/share/vellumcraft/samples/welcome.png
step env QT_QPA_PLATFORM=offscreen vellumcraft --screenshot /tmp/window.png /usr/share/vellumcraft/samples/welcome.png
cp "$root/tmp/window.png" "$folder/window.png"
step vellum list /tmp/window.png
for file in applications/org.vellumcraft.Vellumcraft.desktop mime/packages/vellumcraft.xml metainfo/org.vellumcraft.Vellumcraft.metainfo.xml \
  icons/hicolor/48x48/apps/vellumcraft.png man/man1/vellum.1.gz man/man1/vellumcraft.1.gz vellumcraft/docs/guide/index.md \
  doc/vellumcraft/copyright doc/vellumcraft/changelog.gz; do
  inside test -s "/usr/share/$file" || { echo "missing: $file" >&2; exit 1; }
done
step apt-get -qq remove -y vellumcraft
[[ ! -e $root/usr/bin/vellumcraft && ! -e $root/usr/share/vellumcraft ]] || { echo "files stayed behind" >&2; exit 1; }
echo "The package installs, starts and goes."
