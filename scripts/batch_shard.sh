#!/bin/sh
# One shard of a batch run, which may be started again: what its report has as "Ok" is left out, and the report is
# whole behind it.
#
#   batch_shard.sh I/N LIST REPORTS OPERATION [OPTION...]
#
# LIST holds paths, one a line, that mean the same on every machine, REPORTS is a folder that all of them see. The
# variable VELLUM names the program where it isn't "vellum".
set -eu
if [ $# -lt 4 ]; then
  sed -n '2,9s/^# \{0,1\}//p' "$0" >&2
  exit 2
fi
shard=$1 list=$2 reports=$3
shift 3
report=$reports/shard_${shard%/*}_of_${shard#*/}.json
done=$report.done rest=$report.rest
mkdir -p "$reports"
: > "$done"
for earlier in "$report" "$rest"; do
  # The last line of a run that was killed may be cut.
  if [ -e "$earlier" ]; then grep '"result":"Ok".*}$' "$earlier" >> "$done" || true; fi
done
sort -u -o "$done" "$done"
mv "$done" "$report"
# Targets of files that were written and not yet reported may stand there already.
status=0
"${VELLUM:-vellum}" batch "$@" --list "$list" --shard "$shard" --json --overwrite "${OVERWRITE:-silently}" \
  --resume "$report" > "$rest" || status=$?
cat "$rest" >> "$report"
rm "$rest"
exit "$status"
