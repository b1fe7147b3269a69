#!/bin/sh
# A batch run over several machines, by GNU parallel and ssh. Start it again to go on after a failure.
#
#   batch_hosts.sh HOSTS N LIST REPORTS OPERATION [OPTION...]
#
# HOSTS are names as ssh takes them, with commas between; ":" is this machine. Each of them gets one of the N shards
# at a time. Program, list, sources, destination and REPORTS have the same paths everywhere. VELLUM names the
# program, OVERWRITE what happens where a target exists; SSH is the command that reaches a machine.
set -eu
if [ $# -lt 5 ]; then
  sed -n '2,8s/^# \{0,1\}//p' "$0" >&2
  exit 2
fi
hosts=$1 n=$2 list=$3 reports=$4
shift 4
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$reports"
# Every word goes through the shell of the other machine.
quoted() { for word; do printf "'%s' " "$(printf '%s' "$word" | sed "s/'/'\\\\''/g")"; done; }
command="VELLUM=$(quoted "${VELLUM:-vellum}")OVERWRITE=$(quoted "${OVERWRITE:-silently}")"
command="$command $(quoted "$here/batch_shard.sh")'{}/$n' $(quoted "$list" "$reports" "$@")"
status=0
seq "$n" | parallel --jobs 1 --ssh "${SSH:-ssh}" --sshlogin "$hosts" --joblog "$reports/parallel.log" \
  "$command" || status=$?
set --
for report in "$reports"/shard_*_of_"$n".json; do set -- "$@" --report "$report"; done
"${VELLUM:-vellum}" batch "$@" || status=1
exit "$status"
