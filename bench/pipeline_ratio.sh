#!/bin/bash
# Recording against a bare GStreamer pipeline: the same 1080p clip, encoder and settings, unpaced, without sound. CPU
# time of the whole processes, each the median of several runs taken in turn.
# Usage: bench/pipeline_ratio.sh [CLIP [RUNS]]
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
clip=${1:-/usr/share/forensics-samples/original-files/movie1/VID_20191220_170832.mp4}
runs=${2:-3}
record=build/bin/morvane-record
[ -e "$clip" ] || install_packages $bench_packages
install_packages $test_packages
[ -x "$record" ] || { echo "build first: ./run or ./test" >&2; exit 1; }

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
ffmpeg -v error -stream_loop 4 -i "$clip" -map 0:v -c copy "$dir/clip.mp4"
encoder="x264enc tune=zerolatency speed-preset=superfast pass=qual quantizer=21 vbv-buf-capacity=1000 key-int-max=30"
encoder+=" bitrate=12441"  # as platform/camera/encoders.cpp has it at 1080p30

TIMEFORMAT='%U %S'
# Appends the CPU seconds of a command, which writes $dir/out.mp4, to a file.
cost() {
  local log=$1
  shift
  rm -f "$dir/out.mp4"
  { time "$@" >"$dir/said" 2>&1; } 2>"$dir/times" || { cat "$dir/said" >&2; exit 1; }
  awk '{ printf "%.3f\n", $1 + $2 }' "$dir/times" >>"$dir/$log"
}
ours() { cost "$1" "$record" --source "clip:$dir/clip.mp4" --unpaced --microphone none "${@:2}" "$dir/out.mp4"; }
for _ in $(seq "$runs"); do
  cost bare gst-launch-1.0 -q filesrc location="$dir/clip.mp4" ! decodebin ! videoconvert ! \
    video/x-raw,format=NV12 ! $encoder ! h264parse ! mp4mux ! filesink location="$dir/out.mp4"
  ours plain
  ours everything --filter 11 --texture Scope --stamp 1
done

median() { sort -n "$dir/$1" | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
bare=$(median bare)
for what in bare plain everything; do
  awk -v what="$what" -v a="$(median $what)" -v b="$bare" 'BEGIN { printf "%-12s %8.2f s %6.2f\n", what, a, a / b }'
done
