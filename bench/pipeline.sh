#!/bin/bash
# What the filters cost in a whole recording: a 1080p clip is recorded unpaced without a filter and with each of the
# thirteen; frames per second and CPU time per frame, each the median of several runs taken in turn.
# Usage: bench/pipeline.sh [CLIP [RUNS]]
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

TIMEFORMAT='%U %S %R'
for _ in $(seq "$runs"); do
  for filter in -1 0 1 2 3 4 5 6 7 8 9 10 11; do
    { time "$record" --source "clip:$dir/clip.mp4" --unpaced --filter "$filter" "$dir/out.mp4" >"$dir/said"; } 2>"$dir/times"
    read -r frames _ <"$dir/said"
    read -r user system wall <"$dir/times"
    awk -v n="$frames" -v u="$user" -v s="$system" -v w="$wall" 'BEGIN { printf "%.3f %.2f\n", 1000 * (u + s) / n, n / w }' \
      >>"$dir/filter$filter"
    rm "$dir/out.mp4"
  done
done

median() { sort -n -k"$2" "$1" | awk -v f="$2" '{ v[NR] = $f } END { print v[int((NR + 1) / 2)] }'; }
none=$(median "$dir/filter-1" 1)
printf '%d frames, median of %d runs, start and proof of the encoder included\n' "$frames" "$runs"
printf '%8s %12s %14s %10s\n' filter frames/s 'CPU ms/frame' 'of none'
for filter in -1 0 1 2 3 4 5 6 7 8 9 10 11; do
  cpu=$(median "$dir/filter$filter" 1)
  printf '%8s %12s %14s %9s%%\n' "$filter" "$(median "$dir/filter$filter" 2)" "$cpu" \
    "$(awk -v a="$cpu" -v b="$none" 'BEGIN { printf "%.1f", 100 * a / b }')"
done
