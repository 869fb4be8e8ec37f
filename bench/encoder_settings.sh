#!/bin/bash
# x264's presets side by side on real footage: CPU, size and likeness (SSIM) at the same bit rate and at the recorder's
# quality. "tuned" is what the recorder's second row says: ultrafast with CABAC, the 8x8 transform and deblocking.
# Usage: bench/encoder_settings.sh [CLIP]
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
clip=${1:-/usr/share/forensics-samples/original-files/movie1/VID_20191220_170832.mp4}
[ -e "$clip" ] || install_packages $bench_packages
install_packages $test_packages

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
ffmpeg -v error -stream_loop 2 -i "$clip" -map 0:v -vf scale=1920:1080:out_range=full,format=nv12 -f rawvideo "$dir/clip"
raw="-f rawvideo -pix_fmt nv12 -video_size 1920x1080 -framerate 30 -i $dir/clip"
frames=$(($(stat -c %s "$dir/clip") / 3110400))
TIMEFORMAT='%U %S'

# NAME OPTION...: encodes and prints a line of the table.
row() {
  local name=$1 cpu ssim
  shift
  # shellcheck disable=SC2086
  cpu=$({ time ffmpeg -v error $raw -c:v libx264 -tune zerolatency -g 30 "$@" -f h264 -y "$dir/film" 2>"$dir/log"; } 2>&1) ||
    { cat "$dir/log" >&2; exit 1; }
  # shellcheck disable=SC2086
  ssim=$(ffmpeg -f h264 -framerate 30 -i "$dir/film" $raw -lavfi '[0:v]format=yuv420p[a];[1:v]format=yuv420p[b];[a][b]ssim' \
    -f null - 2>&1 | sed -n 's/.*All:\([0-9.]*\) (\([0-9.]*\)).*/\1 | \2/p')
  awk -v name="$name" -v n="$frames" -v bytes="$(stat -c %s "$dir/film")" -v ssim="$ssim" \
    '{ printf "| %s | %.1f | %.2f | %s |\n", name, 1000 * ($1 + $2) / n, bytes * 8 * 30 / n / 1e6, ssim }' <<<"$cpu"
}

tuned=stitchable=1:cabac=1:8x8dct=1:weightp=0:scenecut=0:no-deblock=0
for mode in "-b:v 8M -maxrate 8M -bufsize 8M" "-crf 21"; do
  echo "| $mode | CPU ms/frame | Mbit/s | SSIM | dB |"
  for preset in veryfast superfast ultrafast; do
    # shellcheck disable=SC2086
    row $preset $mode -preset $preset
  done
  # shellcheck disable=SC2086
  row tuned $mode -preset ultrafast -x264-params $tuned
done
