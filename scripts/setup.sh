#!/usr/bin/env bash
# Installs the Debian packages of packages.txt that are missing. Needs root or sudo only when something is missing.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
missing=()
while read -r package; do
  [[ -z $package || $package == \#* ]] && continue
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done < "$here/packages.txt"
[[ ${#missing[@]} -eq 0 ]] && exit 0

if [[ $EUID -eq 0 ]]; then
  as_root=()
elif command -v sudo >/dev/null; then
  as_root=(sudo)
else
  printf 'These packages are missing, and neither root nor sudo is at hand to install them:\n%s\n' "${missing[*]}" >&2
  exit 1
fi

echo "Installing: ${missing[*]}"
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600)
"${apt[@]}" update
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" >/dev/null
