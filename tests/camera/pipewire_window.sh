#!/bin/bash
# The window follows PipeWire's cameras: one that comes while there is none, one that goes, one that comes back, one
# whose computer was asleep, and one whose server was started again.
# Usage: pipewire_window.sh MORVANE [ASLEEP]
program=$1
asleep=${2:-}
. "$(dirname "$0")/pipewire_session.sh"

start_camera() {
  start_pictures fakecam format=YUY2,width=640,height=480,framerate=30/1,colorimetry=bt601 \
    media.class=Video/Source,media.role=Camera
}

# at_least N TEXT: the program has written it so often
at_least() { [ "$(grep -c "$2" "$dir/window.log")" -ge "$1" ]; }

LD_PRELOAD=$asleep ASLEEP_FILE=$dir/asleep "$program" >"$dir/window.log" 2>&1 &
window=$!
jobs+=("$window")
soon at_least 1 onWindowAttached || fail "no picture"
at_least 1 'no camera found, filming the built-in scene' || fail "a scene that nobody is told of"

start_camera
soon at_least 1 'Selecting resolution 640 x 480' || fail "a camera that appears is not opened"
soon at_least 2 onWindowAttached || fail "the camera that appeared shows nothing"

kill -9 "$pictures"
soon at_least 1 'Resource are being revoked!' || fail "the loss is not noticed"
sleep 2
at_least 2 'filming the built-in scene' && fail "a scene in place of a camera that was there"

start_camera
soon at_least 2 'Selecting resolution 640 x 480' || fail "a camera that comes back is not opened"
soon at_least 3 onWindowAttached || fail "the camera that came back shows nothing"
if [ -n "$asleep" ]; then
  touch "$dir/asleep"
  soon at_least 2 'Resource are being revoked!' || fail "sleep is not noticed"
  at_least 1 'camera: the computer was asleep' || fail "the reason is missing"
  soon at_least 3 'Selecting resolution 640 x 480' || fail "the camera is not opened again after sleep"
  sleep 1
  at_least 3 'Resource are being revoked!' && fail "one sleep is noticed twice"
fi

lost=$(grep -c 'Resource are being revoked!' "$dir/window.log")
opened=$(grep -c 'Selecting resolution 640 x 480' "$dir/window.log")
shown=$(grep -c onWindowAttached "$dir/window.log")
kill -9 "$server" "$manager" "$pictures"
soon at_least $((lost + 1)) 'Resource are being revoked!' || fail "the server's end is not noticed"
start_servers
start_camera
soon at_least $((opened + 1)) 'Selecting resolution 640 x 480' || fail "not opened after the server's restart"
soon at_least $((shown + 1)) onWindowAttached || fail "no picture after the server's restart"
kill -TERM "$window"
wait "$window" || fail "SIGTERM ended it with $?"
