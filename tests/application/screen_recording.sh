#!/bin/bash
# Films an X11 display of the test's own, which is red but for the program's window.
# Usage: screen_recording.sh TEST_END_TO_END
set -u
. "$(dirname "$0")/../support/soon.sh"
log=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$log" >/dev/null 2>&1 &
jobs=($!)
trap 'kill "${jobs[@]}" 2>/dev/null; wait 2>/dev/null; rm -f "$log"' EXIT
soon test -s "$log" || { echo "FAILED: no display"; exit 1; }
# The bus of whoever runs this has no part in it.
DISPLAY=":$(cat "$log")"
export DISPLAY QT_QPA_PLATFORM=xcb DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent
gst-launch-1.0 -q videotestsrc pattern=red ! video/x-raw,width=1280,height=900,framerate=5/1 ! ximagesink &
jobs+=($!)
is_red() {
  read -r r g _ <<<"$(ffmpeg -v error -f x11grab -video_size 2x2 -i "$DISPLAY+1270,890" -frames:v 1 -f rawvideo -pix_fmt rgb24 - |
    od -An -tu1 -N3)"
  [ "${r:-0}" -gt 200 ] && [ "${g:-255}" -lt 50 ]
}
soon is_red || { echo "FAILED: the display does not turn red"; exit 1; }
GTEST_FILTER='*Xvfb*' "$1"
