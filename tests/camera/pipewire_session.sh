# shellcheck shell=bash
# A desktop session of a test's own: message bus, PipeWire, and pictures from nowhere. Sourced with the script's own
# arguments: it starts the script again within the session, where $dir is a folder that goes with it.
set -u
. "$(dirname "$0")/../support/soon.sh"

if [ -z "${PIPEWIRE_TEST_SESSION:-}" ]; then
  dir=$(mktemp -d)
  mkdir -m 700 "$dir/run"
  # A bus that starts nothing by itself: what this computer has installed plays no part.
  cat >"$dir/bus.conf" <<'CONF'
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
CONF
  env -u DISPLAY -u WAYLAND_DISPLAY PIPEWIRE_TEST_SESSION="$dir" XDG_RUNTIME_DIR="$dir/run" HOME="$dir" \
    XDG_CONFIG_HOME="$dir/config" XDG_DATA_HOME="$dir/data" dbus-run-session --config-file="$dir/bus.conf" -- "$0" "$@"
  status=$?
  rm -rf "$dir"
  exit $status
fi
dir=$PIPEWIRE_TEST_SESSION
jobs=()
trap 'kill -CONT "${jobs[@]}" 2>/dev/null; kill "${jobs[@]}" 2>/dev/null; wait 2>/dev/null' EXIT

fail() {
  echo "FAILED: $*"
  sed 's/^/  /' "$dir"/*.log
  exit 1
}

has_node() { pw-cli ls Node 2>/dev/null | grep -q "\"$1\""; }

# start_pictures NODE CAPS PROPERTIES [ELEMENT]: red pictures, offered under a name. $pictures is the process.
# A fresh one for each client: pipewiresink serves its first only, later ones starve.
start_pictures() {
  gst-launch-1.0 -q videotestsrc is-live=true pattern=red ! "video/x-raw,$2" ! ${4:-identity} \
    ! pipewiresink mode=provide stream-properties="p,node.name=$1,$3" >"$dir/$1.log" 2>&1 &
  pictures=$!
  jobs+=("$pictures")
  soon has_node "$1" || fail "the pictures of $1 do not appear"
  sleep 1
}

# pixel_is_red FILM X Y
pixel_is_red() {
  local r g b
  read -r r g b <<<"$(ffmpeg -v error -i "$1" -frames:v 1 -vf "crop=2:2:$2:$3" -f rawvideo -pix_fmt rgb24 - | od -An -tu1 -N3)"
  [ "${r:-0}" -gt 240 ] && [ "${g:-255}" -lt 16 ] && [ "${b:-255}" -lt 16 ]
}

frames_of() { ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 "$1"; }

# $server and $manager are the processes.
start_servers() {
  pipewire >"$dir/pipewire.log" 2>&1 &
  server=$!
  jobs+=("$server")
  soon pw-cli info 0 >/dev/null 2>&1 || fail "no PipeWire"
  wireplumber >"$dir/wireplumber.log" 2>&1 &
  manager=$!
  jobs+=("$manager")
}

start_servers
