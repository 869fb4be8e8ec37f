#!/bin/bash
# The program as a desktop runs it: the screen kept awake, a second start, the end by a signal, a start without what
# belongs to it.
# Usage: program.sh MORVANE FAKE_DESKTOP
set -u
. "$(dirname "$0")/../support/soon.sh"
program=$1
desktop=$2
[ -n "${PROGRAM_TEST_SESSION:-}" ] || PROGRAM_TEST_SESSION=1 exec dbus-run-session -- "$0" "$@"
dir=$(mktemp -d)
jobs=()
trap 'kill "${jobs[@]}" 2>/dev/null; wait 2>/dev/null; rm -rf "$dir"' EXIT
mkdir -m 700 "$dir/run"
mkdir -p "$dir/config/morvane"
printf '[camera]\nrear = scene\nfront = scene\nmicrophone = none\n' >"$dir/config/morvane/device.ini"
unset DISPLAY WAYLAND_DISPLAY XDG_CACHE_HOME XDG_STATE_HOME
export HOME=$dir XDG_CONFIG_HOME=$dir/config XDG_DATA_HOME=$dir/share XDG_RUNTIME_DIR=$dir/run

fail() {
  echo "FAILED: $*"
  cat "$dir"/*.log
  exit 1
}

"$desktop" ignore >"$dir/desktop.log" 2>&1 &
jobs+=($!)
soon grep -q ready "$dir/desktop.log" || fail "no desktop"
"$program" >"$dir/first.log" 2>&1 &
first=$!
jobs+=("$first")
soon grep -q onWindowAttached "$dir/first.log" || fail "no picture"
[ "$(stat -c %s "$dir/share/morvane/data/tarnel2.dat")" = 18348 ] || fail "no preferences in the sandbox"

begin=$(date +%s%N)
"$program" >"$dir/second.log" 2>&1 || fail "a second start ended with $?"
[ $((($(date +%s%N) - begin) / 1000000)) -lt 3000 ] || fail "a second start took long"
[ ! -s "$dir/second.log" ] || fail "a second start has something to say"
kill -0 "$first" || fail "the first start did not survive the second"

soon grep -q '^kept awake by morvane: The camera is on$' "$dir/desktop.log" || fail "the screen may dim"
grep -q 'may sleep' "$dir/desktop.log" && fail "the screen may dim again"

kill -TERM "$first"
wait "$first" || fail "SIGTERM ended it with $?"
soon grep -q 'may sleep' "$dir/desktop.log" || fail "the screen is kept awake for nobody"

# Its package is looked for beside the program.
mkdir -p "$dir/alone/bin"
cp "$program" "$dir/alone/bin/morvane"
"$dir/alone/bin/morvane" >"$dir/alone.log" 2>&1 && fail "it starts without its package"
[ "$(cat "$dir/alone.log")" = "the application's package is missing" ] || fail "no clear line about the missing package"
