#!/bin/bash
# The same job by FFmpeg's filters: texture over the frame, one colour kept, date and time stamped, on the same 1080p
# clip, decoded and brought to full-range BT.601 by both. Nothing is encoded: a picture that has gone grey is cheaper to
# encode by more than any filter costs. What the filters cost is the CPU time of the whole process less that of the same
# process without them; each is the median of several runs taken in turn.
# Usage: bench/against_ffmpeg.sh [CLIP [RUNS]]
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
clip=${1:-/usr/share/forensics-samples/original-files/movie1/VID_20191220_170832.mp4}
runs=${2:-5}
program=$PWD/build/bin/filter_clip
[ -e "$clip" ] || install_packages $bench_packages
install_packages $test_packages
[ -x "$program" ] || { echo "build first: ./test" >&2; exit 1; }

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
ffmpeg -v error -stream_loop 4 -i "$clip" -map 0:v -c copy "$dir/clip.mp4"
texture=$PWD/build/package/native/assets/images/textures/eff_frost_window.png
font=$(fc-match -f '%{file}' 'DejaVu Sans')
frames=$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 "$dir/clip.mp4")

TIMEFORMAT='%U %S'
# Appends the CPU milliseconds per frame of a command to a file.
cost() {
  local log=$1
  shift
  { time "$@" >/dev/null 2>&1; } 2>"$dir/times"
  awk -v n="$frames" '{ printf "%.3f\n", 1000 * ($1 + $2) / n }' "$dir/times" >>"$dir/$log"
}
to_full="scale=out_range=full:out_color_matrix=bt601,format=nv12"
filters="[0:v]$to_full,format=yuv420p[v];[v][1:v]overlay=format=yuv420,chromahold=color=red:similarity=0.3"
filters+=",drawtext=fontfile=$font:fontsize=43:fontcolor=white:text='%{localtime\:%m-%d-%Y %I\\\\\:%M\\\\\:%S}'"
ln -s "$PWD/build/package" "$dir/app"  # glyphs and plate are found from here
cd "$dir"
for _ in $(seq "$runs"); do
  cost ours_plain "$program" clip.mp4
  cost ours_filtered "$program" clip.mp4 "$texture"
  cost theirs_plain ffmpeg -v error -i clip.mp4 -vf "$to_full" -f null -
  cost theirs_filtered ffmpeg -v error -i clip.mp4 -i "$texture" -filter_complex "$filters" -f null -
done

median() { sort -n "$dir/$1" | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
printf '%d frames, median of %d runs, CPU milliseconds per frame\n' "$frames" "$runs"
awk -v a="$(median ours_plain)" -v b="$(median ours_filtered)" -v c="$(median theirs_plain)" -v d="$(median theirs_filtered)" \
  'BEGIN { printf "%-10s %8s %10s %10s\n", "", "plain", "filtered", "filters"
           printf "%-10s %8.2f %10.2f %10.2f\n", "ours", a, b, b - a
           printf "%-10s %8.2f %10.2f %10.2f\n", "ffmpeg", c, d, d - c
           if (b > a) printf "ffmpeg costs %.1f times the filtering CPU\n", (d - c) / (b - a) }'
