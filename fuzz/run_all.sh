#!/usr/bin/env bash
# Runs each built fuzz target over its seeds for a while, as many at a time as there are processors:
#   fuzz/run_all.sh SECONDS [TARGET...]
# FUZZ_SEED is where chance begins (0: elsewhere each time; the inputs differ a little all the same), FUZZ_RUNS ends each
# target behind so many inputs; with 0 it walks its seeds alone.
# What makes one fail is kept in build/debug/found, and the failure is shown.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=$1
shift
[[ $# -gt 0 ]] || set -- $(find build/debug/bin -name 'fuzz_*' -printf '%f\n' | sed 's/^fuzz_//' | sort)
found=$PWD/build/debug/found
mkdir -p "$found"
export seconds found
# What the libraries keep until the end is theirs.
export LSAN_OPTIONS=suppressions=$PWD/tests/support/leaks_of_libraries.txt:print_suppressions=0

fuzz_one() {
  local name=$1 words grown log status=0
  words=fuzz/$name.dict
  [[ -f $words ]] || words=fuzz/chunks.dict
  grown=$(mktemp -d)
  log=$(mktemp)
  build/debug/bin/fuzz_"$name" -seed="${FUZZ_SEED:-0}" -runs="${FUZZ_RUNS:--1}" -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=4096 -timeout=30 \
    -close_fd_mask=1 -print_final_stats=1 -artifact_prefix="$found/$name-" -dict="$words" "$grown" "fuzz/seeds/$name" >"$log" 2>&1 || status=$?
  if [[ $status -eq 0 ]]; then
    printf '%-14s %9s runs, %5s features, from %s seeds\n' "$name" \
      "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" "$(grep -o 'ft: [0-9]*' "$log" | tail -n 1 | cut -c5-)" \
      "$(ls "fuzz/seeds/$name" | wc -l)"
  else
    printf '%s FAILED:\n' "$name"
    tail -n 60 "$log"
  fi
  rm -r "$grown" "$log"
  return "$status"
}
export -f fuzz_one
printf '%s\n' "$@" | xargs -P "$(nproc)" -I '{}' bash -c 'set -u; fuzz_one {}'
