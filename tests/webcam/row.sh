#!/bin/bash
# One row in the guest: row.sh FOLDER. Runs FOLDER/script with the words below and leaves there what is to be looked at:
# film.mp4, status, milliseconds, stdout, stderr, and a journal for each webcam. Its own output is a trace.
# $bin is where the programs are.
# shellcheck disable=SC2154
set -u
folder=$1
# In memory, so that nobody waits for the host while he films.
dir=$(mktemp -d -p /run)
out=$dir/out
mkdir "$out"
chmod 755 "$dir"
usb=/sys/devices/platform/vhci_hcd.0
jobs=()

clean_up() {
  kill "${jobs[@]}" 2>/dev/null
  wait 2>/dev/null
  for _ in $(seq 100); do
    compgen -G "$usb/usb*/*-*/idVendor" >/dev/null || break
    sleep 0.1
  done
  modprobe -qr vivid
  modprobe -qr snd-aloop
  udevadm settle
  cp "$dir/film.mp4" "$out"/* "$folder" 2>/dev/null
  rm -rf "$dir"
}
trap clean_up EXIT

# soon COMMAND...: waits twenty seconds for it to succeed.
soon() {
  local turn
  for turn in {1..200}; do "$@" && return || sleep 0.1; done
  echo "in vain: $*, $turn times" >&2
  return 1
}

# nodes PORT: the device nodes of the webcam there, the one with pictures first.
nodes() {
  local folder
  for folder in "$usb"/usb*/*-$(($1 + 1))/*:1.0/video4linux/video*; do
    [ -d "$folder" ] && echo "/dev/${folder##*/}"
  done | sort -V
}
has_nodes() { compgen -G "$usb/usb*/*-$(($1 + 1))/*:1.0/video4linux/video*" >/dev/null; }
has_no_nodes() { ! has_nodes "$1"; }
node() { nodes "$1" | head -n1; }

# PipeWire must know a camera before a client asks; its node names the V4L2 device.
pipewire_knows() { pw-cli ls Node 2>/dev/null | grep -q 'media.class = "Video/Source"'; }
known() {
  udevadm settle
  [ -z "${PIPEWIRE_RUNTIME_DIR:-}" ] || soon pipewire_knows
}

# webcam PORT OPTION...: plugs in a webcam. tell PORT COMMAND: makes it do something.
webcam() {
  local port=$1
  shift
  "$bin/usb_webcam" --port "$port" --commands "$dir/webcam.$port" --journal "$out/webcam.$port" "$@" &
  jobs+=($!)
  soon has_nodes "$port"
  known
}
tell() { echo "$2" >"$dir/webcam.$1"; }
replugged() {
  tell "$1" plug
  soon has_nodes "$1"
  known
}
unplugged() {
  tell "$1" unplug
  soon has_no_nodes "$1"
  udevadm settle
}

# vivid: the kernel's virtual camera, nothing but red.
vivid() {
  modprobe vivid n_devs=1 node_types=0x1 num_inputs=1 input_types=0
  soon test -c /dev/video0
  v4l2-ctl -d /dev/video0 -c test_pattern=7,osd_text_mode=2
  known
}

# start OPTION...: begins to film. end: waits until it is done. film: both.
start() {
  begun=$(date +%s%3N)
  $as timeout -s KILL 60 "$bin/morvane-record" --microphone none --seconds 1 "$@" "$dir/film.mp4" \
    >"$out/stdout" 2>"$out/stderr" </dev/null &
  recorder=$!
}
end() {
  wait "$recorder"
  echo $? >"$out/status"
  echo $(($(date +%s%3N) - begun)) >"$out/milliseconds"
}
film() { start "$@" && end; }
# Films what comes first and forgets it.
film_before() { film "$@" && rm -f "$dir/film.mp4"; }
# Waits until the film being made holds something.
filming() { soon test -s "$dir/film.mp4"; }
as=
# Whoever is meant by `film` from here on has no special rights.
as_user() {
  as="setpriv --reuid=65534 --regid=65534 --clear-groups env HOME=$dir"
  chmod 1777 "$dir"
}

# list OPTION...: what the program says there is.
list() {
  "$bin/morvane-record" --list "$@" >"$out/stdout" 2>"$out/stderr" </dev/null
  echo $? >"$out/status"
}

# busy PORT: another program films with this webcam.
busy() {
  v4l2-ctl -d "$(node "$1")" --stream-mmap --stream-count=100000 >/dev/null 2>&1 &
  user=$!
  jobs+=("$user")
  soon grep -q ^start "$out/webcam.$1"
}

# free: it does not any more.
free() { kill "$user"; }

# microphones NAME...: sound cards of which each hears what is played into it. play NAME: plays a tone into one.
microphones() {
  local names
  names=$(printf '%s,' "$@")
  modprobe snd-aloop enable="$(printf '1,%.0s' "$@" | sed 's/,$//')" id="${names%,}"
  soon test -e "/proc/asound/$1"
  udevadm settle
}
play() {
  gst-launch-1.0 -q audiotestsrc is-live=true freq=440 volume=0.5 ! audio/x-raw,rate=48000,channels=2 \
    ! alsasink device="hw:$1,1" &
  jobs+=($!)
  soon grep -q RUNNING /proc/asound/"$1"/pcm1p/sub0/status
}

# window: opens the program's window, without a display and small, since this machine draws slowly. close_window: ends
# it. What it does not do in time is said in its output.
window() {
  mkdir -p "$dir/config/morvane"
  printf '[camera]\nmicrophone = none\n[display]\nwidth = 240\nheight = 320\n' >"$dir/config/morvane/device.ini"
  chmod -R a+rX "$dir/config"
  begun=$(date +%s%3N)
  $as env HOME="$dir" XDG_CONFIG_HOME="$dir/config" XDG_DATA_HOME="$dir/share" XDG_STATE_HOME="$dir/state" \
    QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software timeout -s KILL 90 "$bin/window_watch" \
    >"$out/stdout" 2>"$out/stderr" </dev/null &
  recorder=$!
}
close_window() {
  sleep "${1:-1}"
  kill -TERM "$recorder"  # timeout passes it on
  end
}
# shown N: it has had the first picture of a camera so often. says PATTERN: it has said so.
has_shown() { [ "$(grep -c onWindowAttached "$out/stderr")" -ge "$1" ]; }
shown() { soon has_shown "$1" || echo "in vain: shown $1" >>"$out/stdout"; }
says() { soon grep -Eq "$1" "$out/stderr" || echo "in vain: says $1" >>"$out/stdout"; }

PS4='+ $EPOCHREALTIME '
set -x
. "$folder/script"
