#!/usr/bin/env bash
# Runs all built fuzz targets side by side, as many at a time as there are processors, and prints a table:
#   scripts/fuzz_all.sh MINUTES [TARGET...]
# All of it takes about MINUTES. A target begins with its seeds and the files of its kind in the corpus, where that is there,
# and goes on behind what it finds; findings are kept in build/debug/found. It fails where there are some.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=$1
shift
[[ $# -gt 0 ]] || set -- $(find build/debug/bin -name 'fuzz_*' -printf '%f\n' | sed 's/^fuzz_//' | sort)
jobs=$(nproc)
rounds=$((($# + jobs - 1) / jobs))
export seconds=$((minutes * 60 / rounds)) found=$PWD/build/debug/found
[[ $seconds -gt 0 ]] || { echo "$# targets need more minutes" >&2; exit 2; }
mkdir -p "$found"
# What the libraries keep until the end is theirs.
export LSAN_OPTIONS=suppressions=$PWD/tests/support/leaks_of_libraries.txt:print_suppressions=0

fuzz_one() {
  local name=$1 words grown log last
  words=fuzz/$name.dict
  [[ -f $words ]] || words=fuzz/chunks.dict
  grown=$(mktemp -d)
  log=$(mktemp)
  local -a begin=()
  for folder in "fuzz/seeds/$name" "../shared/corpus/$name"; do
    [[ -d $folder ]] && begin+=("$folder")
  done
  build/debug/bin/fuzz_"$name" -fork=1 -ignore_crashes=1 -ignore_ooms=1 -ignore_timeouts=1 -max_total_time="$seconds" \
    -max_len=65536 -rss_limit_mb=4096 -timeout=30 -close_fd_mask=1 -artifact_prefix="$found/$name-" -dict="$words" \
    "$grown" "${begin[@]}" >"$log" 2>&1 || true
  # "#1234: cov: 56 ft: 78 corp: 9 exec/s 10 oom/timeout/crash: 0/0/0 time: 11s ..."
  last=$(grep -E '^#[0-9]+: cov: ' "$log" | tail -n 1 || true)
  if [[ $last =~ ^#([0-9]+):\ cov:\ ([0-9]+)\ .*crash:\ ([0-9]+)/([0-9]+)/([0-9]+) ]]; then
    printf '%-14s %12s %8s %9s\n' "$name" "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" \
      $((BASH_REMATCH[3] + BASH_REMATCH[4] + BASH_REMATCH[5]))
  else
    printf '%-14s did not run:\n' "$name"
    tail -n 20 "$log"
  fi
  rm -r "$grown" "$log"
}
export -f fuzz_one
table=$(mktemp)
printf '%-14s %12s %8s %9s\n' target executions edges findings
printf '%s\n' "$@" | xargs -P "$jobs" -I '{}' bash -c 'set -u; fuzz_one {}' | tee "$table"
bad=$(awk '!/^[a-z_]+ +[0-9]+ +[0-9]+ +0$/' "$table")
rm "$table"
[[ -z $bad ]]
