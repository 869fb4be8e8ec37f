#!/bin/bash
# Minutes of recording at 1080p with a filter: resident memory over time, drops at the end. Not part of ./test.
# Usage: bench/soak.sh [MINUTES]
set -eu
cd "$(dirname "$0")/.."
minutes=${1:-5}
dir=$(mktemp -d)
trap 'kill "$recorder" 2>/dev/null || true; rm -rf "$dir"' EXIT
build/bin/morvane-record --source scene --size 1920x1080 --filter 11 --microphone tone --seconds $((minutes * 60)) \
  "$dir/soak.mp4" >"$dir/said" &
recorder=$!
for _ in $(seq $((minutes * 6))); do
  sleep 10
  kill -0 "$recorder" 2>/dev/null || break
  awk '/VmRSS/ { printf "%d MiB\n", $2 / 1024 }' "/proc/$recorder/status"
done
wait "$recorder"
cat "$dir/said"
