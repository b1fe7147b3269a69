#!/bin/sh
# A batch run as an array of tasks of a Slurm cluster. Start it again to go on after a failure.
#
#   batch_slurm.sh N LIST REPORTS OPERATION [OPTION...]
#
# N tasks work on a shard each. Program, list, sources, destination and REPORTS have the same paths on every node.
# VELLUM names the program, OVERWRITE what happens where a target exists, SBATCH_OPTIONS goes to sbatch, as in
# "--cpus-per-task=4 --time=1:00:00".
set -eu
if [ $# -lt 4 ]; then
  sed -n '2,8s/^# \{0,1\}//p' "$0" >&2
  exit 2
fi
n=$1 list=$2 reports=$3
shift 3
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$reports"
quoted() { for word; do printf "'%s' " "$(printf '%s' "$word" | sed "s/'/'\\\\''/g")"; done; }
command="VELLUM=$(quoted "${VELLUM:-vellum}")OVERWRITE=$(quoted "${OVERWRITE:-silently}")"
command="$command $(quoted "$here/batch_shard.sh")\$SLURM_ARRAY_TASK_ID/$n $(quoted "$list" "$reports" "$@")"
status=0
# shellcheck disable=SC2086 # several words
sbatch --wait --job-name=vellum --array="1-$n" --output="$reports/task_%a.log" ${SBATCH_OPTIONS:-} --wrap "$command" ||
  status=$?
set --
for report in "$reports"/shard_*_of_"$n".json; do set -- "$@" --report "$report"; done
"${VELLUM:-vellum}" batch "$@" || status=1
exit "$status"
