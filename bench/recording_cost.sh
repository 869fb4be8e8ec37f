#!/bin/bash
# CPU of recording at 1080p30 with a texture, the stamp, one color kept and a tone, next to a bare GStreamer pipeline that
# encodes frames like those of the film in the same way: by morvane-record, and in the window where Xvfb is installed.
# Usage: bench/recording_cost.sh [SECONDS [CLIP]]
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
seconds=${1:-20}
clip=${2:-/usr/share/forensics-samples/original-files/movie1/VID_20191220_170832.mp4}
[ -e "$clip" ] || install_packages $bench_packages
# shellcheck disable=SC2086
install_packages $test_packages
[ -x build/bin/bench_window ] || { echo "build bench_window first" >&2; exit 1; }

dir=$(mktemp -d -p /dev/shm)
x=
trap 'rm -rf "$dir"; [ -z "$x" ] || kill "$x"' EXIT
frames=$((seconds * 30))
TIMEFORMAT='%U %S'

# NAME FILM CPU...: prints a line of the table, per frame of the film.
row() {
  awk -v name="$1" -v n="$2" '{ printf "%-28s %6d frames %8.2f ms of CPU a frame\n", name, n, 1000 * ($1 + $2) / n }'
}
pictures() { ffprobe -v error -count_packets -select_streams v -show_entries stream=nb_read_packets -of csv=p=0 "$1"; }
# Raw frames of a film, at most so many: reading them costs next to nothing.
unpack() { ffmpeg -v error -y -i "$1" -vf scale=1920:1080:out_range=full:out_color_matrix=bt601 -r 30 -frames:v "$2" -pix_fmt nv12 -f rawvideo "$3"; }
raw="filesrc location=$dir/raw ! rawvideoparse format=nv12 width=1920 height=1080 framerate=30/1
  ! capssetter caps=video/x-raw,colorimetry=(string)1:4:0:0,interlace-mode=(string)progressive ! identity sync=true"

ffmpeg -v error -stream_loop 20 -i "$clip" -map 0:v -c copy -t $((seconds + 12)) "$dir/long.mp4"
unpack "$dir/long.mp4" $((frames + 270)) "$dir/raw"
{ time build/bin/morvane-record --source "gst:$raw" --filter 11 --texture Vintage --stamp 1 --microphone tone \
  --seconds "$seconds" "$dir/ours.mp4" >"$dir/said"; } 2>"$dir/cpu"
cat "$dir/said"
row morvane-record "$(pictures "$dir/ours.mp4")" <"$dir/cpu"

# The settings of the film's encoder, from its own words in the film.
preset=superfast options=stitchable=1:cabac=1:8x8dct=1:weightp=0:scenecut=0:ref=1
grep -aqo 'subme=0' "$dir/ours.mp4" && preset=ultrafast options=$options:no-deblock=0:deblock=0,0
quality=$(grep -ao 'crf=[0-9]*' "$dir/ours.mp4" | head -n1 | cut -d= -f2)
unpack "$dir/ours.mp4" "$frames" "$dir/raw"
# shellcheck disable=SC2086
{ time gst-launch-1.0 -q mp4mux name=mux ! filesink location="$dir/bare.mp4" \
  $raw ! queue ! x264enc tune=zerolatency pass=qual \
  vbv-buf-capacity=1000 threads="$(nproc)" quantizer="${quality:-21}" speed-preset=$preset option-string="$options" \
  bitrate=12442 key-int-max=30 ! h264parse ! mux. \
  audiotestsrc is-live=true samplesperbuffer=480 num-buffers=$((seconds * 100)) ! audioconvert ! avenc_aac ! aacparse ! mux.; } \
  2>"$dir/cpu"
row "bare, $preset" "$(pictures "$dir/bare.mp4")" <"$dir/cpu"

command -v Xvfb >/dev/null || exit 0
unpack "$dir/long.mp4" $((frames + 270)) "$dir/raw"
Xvfb -displayfd 3 -screen 0 1280x1000x24 3>"$dir/display" 2>/dev/null &
x=$!
until [ -s "$dir/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$dir/display") QT_QPA_PLATFORM=xcb QT_QUICK_BACKEND=software build/bin/bench_window cost "$seconds" \
  "gst:$raw" 2>/dev/null | awk '{ print $1, 0 }' | row "in the window" "$frames"
