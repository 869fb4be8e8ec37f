#!/bin/bash
# A Wayland desktop's screen, shared through its portal: filmed whole, no longer shared while filming, refused, not
# answered, and no portal at all.
# Usage: screen_cast.sh MORVANE_RECORD FAKE_DESKTOP TEST_END_TO_END
record=$1
portal=$2
window=$3
. "$(dirname "$0")/pipewire_session.sh"
export WAYLAND_DISPLAY=wayland-test

is_ready() { grep -q ready "$dir/portal.log"; }

# start_portal ARGUMENT...: in the place of the one before.
start_portal() {
  [ -z "${portal_job:-}" ] || { kill "$portal_job"; wait "$portal_job" 2>/dev/null; }
  : >"$dir/portal.log"
  "$portal" "$@" >"$dir/portal.log" 2>&1 &
  portal_job=$!
  jobs+=("$portal_job")
  soon is_ready || fail "the portal does not start"
}

# Square, unlike any film, and of no rate, as screens are.
start_screen() {
  start_pictures screen format=BGRx,width=640,height=640,framerate=60/1 media.class=Video/Source \
    "capssetter caps=video/x-raw,framerate=0/1,max-framerate=60/1"
  node=$(pw-cli ls Node | awk '/^\tid /{id = $2} /"screen"/{print id + 0}')
  [ -n "$node" ] || fail "the screen has no number"
}

start_screen
start_portal share "$node"
"$record" --source desktop --size 1280x720 --microphone none --seconds 2 "$dir/shared.mp4" >"$dir/shared.log" 2>&1 ||
  fail "not recorded"
grep -q 'types 1, cursor 2' "$dir/portal.log" || fail "something else than a monitor with its pointer was asked for"
soon grep -q 'session closed' "$dir/portal.log" || fail "the session was left open"
# Thirty pictures a second, however often the screen is drawn.
frames=$(frames_of "$dir/shared.mp4")
[ "$frames" -ge 45 ] && [ "$frames" -le 75 ] || fail "two seconds have $frames frames"
# Whole: red from top to bottom in the middle, and nothing beside it.
for y in 2 360 716; do pixel_is_red "$dir/shared.mp4" 640 $y || fail "the screen is not whole at line $y"; done
! pixel_is_red "$dir/shared.mp4" 100 360 || fail "the screen is stretched"

# A screen on which nothing moves brings no pictures; the film goes on with its last one.
kill -9 "$pictures"
start_screen
start_portal share "$node"
"$record" --source desktop --size 1280x720 --microphone none --seconds 5 "$dir/still.mp4" >"$dir/still.log" 2>&1 &
recorder=$!
jobs+=("$recorder")
soon test -s "$dir/still.mp4"
sleep 1
kill -STOP "$pictures"
wait "$recorder" || fail "a still screen ended the film"
length=$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$dir/still.mp4")
[ "${length%.*}" -ge 4 ] || fail "the film of a still screen has $length s"

kill -9 "$pictures"
start_screen
start_portal share "$node" 3
begin=$(date +%s)
"$record" --source desktop --size 1280x720 --microphone none --seconds 60 "$dir/ended.mp4" >"$dir/ended.log" 2>&1
[ $? -eq 1 ] || fail "the end of the sharing was not told"
[ $(($(date +%s) - begin)) -lt 10 ] || fail "the end of the sharing was noticed late"
grep -q 'camera: the desktop is no longer shared' "$dir/ended.log" || fail "the end has no reason"
frames=$(frames_of "$dir/ended.mp4")
[ "${frames:-0}" -ge 10 ] || fail "the film has ${frames:-no} frames"

# The same in the window, whose user thinks for a second.
kill -9 "$pictures"
start_screen
start_portal share "$node" 4 1000
env -u WAYLAND_DISPLAY GTEST_FILTER='*Portal*' "$window" >"$dir/window.log" 2>&1 || fail "in the window"

# refusal REASON: nothing is recorded, and one line says why.
refusal() {
  [ "$(cat "$dir/refused.log")" = "cannot film the desktop: $1" ] || fail "no clear line about: $1"
  [ ! -e "$dir/refused.mp4" ] || fail "a film in spite of: $1"
}
start_portal refuse
"$record" --source desktop "$dir/refused.mp4" >"$dir/refused.log" 2>&1 && fail "recorded what was refused"
refusal "sharing it was refused"

start_portal ignore
timeout --signal=INT --kill-after=5 1 "$record" --source desktop "$dir/refused.mp4" >"$dir/refused.log" 2>&1
[ $? -eq 124 ] || fail "Ctrl-C does not end the waiting"
refusal "the program ends"

asked() { [ "$(grep -c 'types 1' "$dir/portal.log")" -gt "$1" ]; }
before=$(grep -c 'types 1' "$dir/portal.log")
"$record" --source desktop "$dir/refused.mp4" >"$dir/refused.log" 2>&1 &
recorder=$!
jobs+=("$recorder")
soon asked "$before" || fail "the portal is not asked"
kill "$portal_job"
wait "$recorder" && fail "recorded without a portal"
refusal "the desktop's portal has ended"

wait "$portal_job" 2>/dev/null
"$record" --source desktop "$dir/refused.mp4" >"$dir/refused.log" 2>&1
refusal "the desktop has no portal for sharing it"
DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent "$record" --source desktop "$dir/refused.mp4" >"$dir/refused.log" 2>&1
grep -q '^cannot film the desktop: no session bus: ' "$dir/refused.log" || fail "no clear line about the missing bus"

env -u WAYLAND_DISPLAY "$record" --source desktop "$dir/refused.mp4" >"$dir/refused.log" 2>&1
refusal "there is no display"
echo "shared whole, ended after $frames frames, refused, not answered, missing"
