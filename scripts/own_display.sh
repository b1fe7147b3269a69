# The beginning of scripts that work on an X server of their own; they source this. Their words are FOLDER_OF_PROGRAMS
# SCRATCH_FOLDER [FOLDER_FOR_PICTURES]; `screen` is the size of the screen, `tools` what is needed beside the server.
# Ends with 77 where a tool is missing. Where openbox is among the tools it manages the windows. At the end
# the processes in `started` are ended.

programs=$1
scratch=$2
pictures=${3:-}
for tool in Xvfb xvfb-run xdotool xauth $tools; do
  command -v "$tool" > /dev/null || { echo "$tool is missing" >&2; exit 77; }
done

if [ -z "${OWN_DISPLAY:-}" ]; then
  OWN_DISPLAY=1 exec xvfb-run -a -s "-screen 0 ${screen}x24 -noreset" "$0" "$@"
fi

export HOME="$scratch" XDG_CONFIG_HOME="$scratch/config" XDG_STATE_HOME="$scratch/state" XDG_RUNTIME_DIR="$scratch/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
unset QT_QPA_PLATFORM
started=
trap 'kill $started 2> /dev/null || true' EXIT

. "$(dirname "$0")/window_keys.sh"
case " $tools " in *" openbox "*)
  openbox > /dev/null 2>&1 &
  started=$!
  ;;
esac
