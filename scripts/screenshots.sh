#!/bin/sh
# Makes the README's pictures: starts Morvane on a display of its own, works it by its keys, and keeps what the window
# shows in out/screenshots. The user's settings and films are left alone.
# usage: scripts/screenshots.sh [BUILD-DIRECTORY]
set -eu
cd "$(dirname "$0")/.."
. ./scripts/packages.sh
# shellcheck disable=SC2086
install_packages $build_packages $screenshot_packages

build=${1:-build}
[ -f "$build/build.ninja" ] || cmake --preset release -B "$build" -DBUILD_TESTING=OFF -DMORVANE_BENCH=OFF >/dev/null
cmake --build "$build" --target morvane

pictures=$PWD/out/screenshots
mkdir -p "$pictures"
home=$(mktemp -d)
server='' program=''
finish() {
  for process in $program $server; do
    kill "$process" 2>/dev/null || continue
    wait "$process" 2>/dev/null || :
  done
  rm -rf "$home"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM

# The server writes the number of the display that it has found free.
Xvfb -displayfd 3 -screen 0 1600x1600x24 -nolisten tcp 3>"$home/display" 2>/dev/null &
server=$!
for _ in $(seq 50); do
  [ -s "$home/display" ] && break
  sleep 0.1
done
DISPLAY=:$(cat "$home/display")
export DISPLAY

# start WIDTH HEIGHT: the program on a handset of that shape, the cameras seeing the built-in scene
start() {
  mkdir -p "$home/.config/morvane"
  cat >"$home/.config/morvane/device.ini" <<EOF
[display]
width = $1
height = $2
[camera]
front = scene
rear = scene
microphone = tone
EOF
  env -u XDG_CONFIG_HOME -u XDG_DATA_HOME -u XDG_CACHE_HOME -u XDG_STATE_HOME -u WAYLAND_DISPLAY \
    HOME="$home" QT_QPA_PLATFORM=xcb "$build/bin/morvane" 2>>"$home/messages" &
  program=$!
  window=$(timeout 20 xdotool search --sync --onlyvisible --pid "$program" | tail -n 1)
  [ -n "$window" ] || { cat "$home/messages" >&2; exit 1; }
  xdotool windowfocus --sync "$window"
  sleep 2
}

stop() {
  press ctrl+q
  wait "$program"
  program=''
}

press() {
  xdotool key --delay 80 "$@"
  sleep 0.8
}

# choose ROW: of the list that has the keyboard
choose() {
  for _ in $(seq "$1"); do xdotool key --delay 80 Down; done
  press Return
}

shoot() {
  eval "$(xdotool getwindowgeometry --shell "$window")"
  ffmpeg -nostdin -loglevel error -y -f x11grab -draw_mouse 0 -video_size "${WIDTH}x$HEIGHT" -i "$DISPLAY+$X,$Y" \
    -frames:v 1 "$pictures/$1.png"
  echo "$pictures/$1.png"
}

start 768 1280
# The first start has something to say after three seconds.
sleep 4
press Return
shoot viewfinder
press m
shoot menu
choose 0
shoot filters
choose 11
shoot colour-keep
press Escape m
choose 2
choose 5
sleep 2
press space
sleep 3
shoot recording
press space
press ctrl+comma
shoot settings
press Escape F1
shoot help
press Escape ctrl+Right
shoot landscape
stop

start 720 720
shoot square
stop
