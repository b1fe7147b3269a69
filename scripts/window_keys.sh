# Windows and keys of programs on an X server, for scripts that source this file.

# The window whose name fits the pattern, once it is there.
window_of() {
  for try in $(seq 100); do
    xdotool search --onlyvisible --name "$1" 2> /dev/null | tail -1 | grep . && return
    sleep 0.1
  done
  echo "no window of $1" >&2
  return 1
}

# Keys go to the window that has the focus; without a window manager it is given one by one.
keys() {
  xdotool windowfocus --sync "$1"
  sleep 0.3
  shift
  for key in "$@"; do
    xdotool key "$key"
    sleep 0.3
  done
}
