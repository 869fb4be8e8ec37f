#!/bin/bash
# A camera without hardware, offered by PipeWire: it is found, filmed, unplugged while filming, and found again.
# Usage: pipewire_camera.sh MORVANE_RECORD
set -u
record=$1

if [ -z "${PIPEWIRE_CAMERA_SESSION:-}" ]; then
  dir=$(mktemp -d)
  mkdir -m 700 "$dir/run"
  env -u DISPLAY -u WAYLAND_DISPLAY PIPEWIRE_CAMERA_SESSION="$dir" XDG_RUNTIME_DIR="$dir/run" HOME="$dir" \
    XDG_CONFIG_HOME="$dir/config" XDG_DATA_HOME="$dir/data" dbus-run-session -- "$0" "$@"
  status=$?
  rm -rf "$dir"
  exit $status
fi
dir=$PIPEWIRE_CAMERA_SESSION
jobs=()
trap 'kill "${jobs[@]}" 2>/dev/null; wait 2>/dev/null' EXIT

fail() {
  echo "FAILED: $*"
  sed 's/^/  /' "$dir"/*.log
  exit 1
}

# A fresh camera: pipewiresink serves its first client only, later ones starve.
start_camera() {
  gst-launch-1.0 -q videotestsrc is-live=true pattern=red \
    ! video/x-raw,format=YUY2,width=640,height=480,framerate=30/1,colorimetry=bt601 \
    ! pipewiresink mode=provide stream-properties="p,media.class=Video/Source,media.role=Camera,node.name=fakecam" \
    >"$dir/camera.log" 2>&1 &
  camera=$!
  jobs+=("$camera")
  for _ in $(seq 100); do
    pw-cli ls Node 2>/dev/null | grep -q fakecam && sleep 1 && return
    sleep 0.1
  done
  fail "the camera without hardware does not appear"
}

# The camera delivers 640 x 480 and nothing but red; the built-in scene would be larger and colourful.
check_film() {
  [ "$(ffprobe -v error -select_streams v -show_entries stream=width,height -of csv=p=0 "$1")" = 640,480 ] ||
    fail "$1 does not show the camera"
  red=$(ffmpeg -v error -i "$1" -frames:v 1 -vf 'crop=2:2:320:240' -f rawvideo -pix_fmt rgb24 - | od -An -tu1 -N3)
  read -r r g b <<<"$red"
  [ "${r:-0}" -gt 240 ] && [ "${g:-255}" -lt 16 ] && [ "${b:-255}" -lt 16 ] || fail "$1 is not red but $red"
}

pipewire >"$dir/pipewire.log" 2>&1 &
jobs+=($!)
for _ in $(seq 100); do [ -S "$XDG_RUNTIME_DIR/pipewire-0" ] && break || sleep 0.1; done
wireplumber >"$dir/wireplumber.log" 2>&1 &
jobs+=($!)
start_camera

"$record" --source auto --microphone none --seconds 1.5 "$dir/found.mp4" >"$dir/found.log" 2>&1 || fail "not recorded"
check_film "$dir/found.mp4"

kill -9 "$camera"
start_camera
"$record" --source auto --microphone none --filter 7 "$dir/unplugged.mp4" >"$dir/unplugged.log" 2>&1 &
recorder=$!
jobs+=("$recorder")
for _ in $(seq 100); do [ -s "$dir/unplugged.mp4" ] && break || sleep 0.1; done
sleep 1
kill -9 "$camera"
begin=$(date +%s%N)
wait "$recorder"
status=$?
took=$((($(date +%s%N) - begin) / 1000000))
[ $status -eq 1 ] || fail "a lost camera ended with status $status"
[ $took -lt 3000 ] || fail "noticing the loss took $took ms"
grep -q 'Resource are being revoked!' "$dir/unplugged.log" || fail "the filter thread was not told"
frames=$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 "$dir/unplugged.mp4")
[ "${frames:-0}" -gt 15 ] || fail "the film of the lost camera has ${frames:-no} frames"

start_camera
"$record" --source auto --microphone none --seconds 1 "$dir/again.mp4" >"$dir/again.log" 2>&1 || fail "not found again"
check_film "$dir/again.mp4"
echo "found, lost after $frames frames (noticed within $took ms), found again"
