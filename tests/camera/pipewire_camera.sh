#!/bin/bash
# A camera without hardware, offered by PipeWire: it is found, filmed, unplugged while filming, and found again.
# Usage: pipewire_camera.sh MORVANE_RECORD
record=$1
. "$(dirname "$0")/pipewire_session.sh"

start_camera() {
  start_pictures fakecam format=YUY2,width=640,height=480,framerate=30/1,colorimetry=bt601 \
    media.class=Video/Source,media.role=Camera
}

# The camera delivers 640 x 480 and nothing but red; the built-in scene would be larger and colourful.
check_film() {
  [ "$(ffprobe -v error -select_streams v -show_entries stream=width,height -of csv=p=0 "$1")" = 640,480 ] ||
    fail "$1 does not show the camera"
  pixel_is_red "$1" 320 240 || fail "$1 is not red"
}

start_camera
"$record" --source auto --microphone none --seconds 1.5 "$dir/found.mp4" >"$dir/found.log" 2>&1 || fail "not recorded"
check_film "$dir/found.mp4"

kill -9 "$pictures"
start_camera
"$record" --source auto --microphone none --filter 7 "$dir/unplugged.mp4" >"$dir/unplugged.log" 2>&1 &
recorder=$!
jobs+=("$recorder")
soon test -s "$dir/unplugged.mp4"
sleep 1
kill -9 "$pictures"
begin=$(date +%s%N)
wait "$recorder"
status=$?
took=$((($(date +%s%N) - begin) / 1000000))
[ $status -eq 1 ] || fail "a lost camera ended with status $status"
[ $took -lt 3000 ] || fail "noticing the loss took $took ms"
grep -q 'Resource are being revoked!' "$dir/unplugged.log" || fail "the filter thread was not told"
frames=$(frames_of "$dir/unplugged.mp4")
[ "${frames:-0}" -gt 15 ] || fail "the film of the lost camera has ${frames:-no} frames"

start_camera
"$record" --source auto --microphone none --seconds 1 "$dir/again.mp4" >"$dir/again.log" 2>&1 || fail "not found again"
check_film "$dir/again.mp4"
echo "found, lost after $frames frames (noticed within $took ms), found again"
