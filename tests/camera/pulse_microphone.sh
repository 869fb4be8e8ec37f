#!/bin/bash
# Microphones without hardware, offered by PipeWire as a PulseAudio server: one is found by a part of its name, filmed,
# unplugged while filming and plugged in again; a server that stops answering while filming holds nobody up.
# Usage: pulse_microphone.sh MORVANE_RECORD
record=$1
. "$(dirname "$0")/pipewire_session.sh"

cat >"$dir/pulse.conf" <<'CONF'
context.spa-libs = { audio.convert.* = audioconvert/libspa-audioconvert support.* = support/libspa-support }
context.modules = [
  { name = libpipewire-module-protocol-native }
  { name = libpipewire-module-client-node }
  { name = libpipewire-module-adapter }
  { name = libpipewire-module-metadata }
  { name = libpipewire-module-protocol-pulse args = { } }
]
pulse.properties = { server.address = [ "unix:native" ] }
CONF
pipewire -c "$dir/pulse.conf" >"$dir/pulse.log" 2>&1 &
pulse=$!
jobs+=("$pulse")
soon test -S "$XDG_RUNTIME_DIR/pulse/native" || fail "no PulseAudio server"

# A loudspeaker that plays a tone; what it plays can be recorded. And a microphone that hears nothing.
node() {
  pw-cli create-node adapter "{ factory.name=support.null-audio-sink node.name=$1 node.description=\"$2\"
    media.class=$3 object.linger=1 audio.position=[FL FR] }" >"$dir/$1.log" 2>&1
  soon has_node "$1" || fail "$1 does not appear"
}
start_tone() {
  node speaker "Loud Speaker" Audio/Sink
  gst-launch-1.0 -q audiotestsrc is-live=true volume=0.5 ! pulsesink device=speaker >"$dir/tone.log" 2>&1 &
  tone=$!
  jobs+=("$tone")
  soon "$record" --source scene --size 160x120 --seconds 0.2 --microphone speaker "$dir/probe$RANDOM.mp4" ||
    fail "the loudspeaker cannot be recorded"
}
node desk "Desk Microphone" Audio/Source/Virtual
start_tone

# is_loud FILM [OPTION...]: whether the tone is in it, or in the part that ffmpeg's options choose
is_loud() {
  local level
  level=$(ffmpeg -nostdin "${@:2}" -i "$1" -af volumedetect -f null - 2>&1 | sed -n 's/.*max_volume: \(-*[0-9]*\).*/\1/p')
  [ "${level:--99}" -gt -30 ]
}
has_silence() { ffmpeg -nostdin -i "$1" -af silencedetect=n=-40dB:d=0.8 -f null - 2>&1 | grep -q silence_start; }

"$record" --source scene --size 160x120 --seconds 1 --microphone nobody "$dir/nobody.mp4" >"$dir/nobody.log" 2>&1 &&
  fail "a microphone that is not there was recorded"
grep -qF 'no microphone is called "nobody"; there are: Desk Microphone (desk), Monitor of Loud Speaker (speaker.monitor)' \
  "$dir/nobody.log" || fail "what there is is not listed"

"$record" --source scene --size 160x120 --seconds 1 --microphone dESK "$dir/desk.mp4" >"$dir/desk.log" 2>&1 ||
  fail "the microphone is not found by its name"
grep -q '^no sound: the microphone gives only silence$' "$dir/desk.log" || fail "silence is not noticed"

"$record" --source scene --size 160x120 --seconds 2 --microphone speaker "$dir/tone.mp4" >"$dir/heard.log" 2>&1 ||
  fail "the monitor is not found by its name"
grep -q 'no sound' "$dir/heard.log" && fail "the tone is not heard"
is_loud "$dir/tone.mp4" || fail "the tone is not in the film"
is_loud "$dir/desk.mp4" && fail "the other microphone was recorded"

"$record" --source scene --size 160x120 --microphone speaker "$dir/hung.mp4" >"$dir/hung.log" 2>&1 &
recorder=$!
jobs+=("$recorder")
soon test -s "$dir/hung.mp4"
sleep 1.5
kill -STOP "$pulse"
begin=$(date +%s%N)
kill -INT "$recorder"
wait "$recorder" || fail "a server that has stopped spoils the recording"
took=$((($(date +%s%N) - begin) / 1000000))
kill -CONT "$pulse"
[ $took -lt 3000 ] || fail "ending took $took ms with a server that has stopped"

"$record" --source scene --size 160x120 --microphone speaker "$dir/lost.mp4" >"$dir/lost.log" 2>&1 &
recorder=$!
jobs+=("$recorder")
soon test -s "$dir/lost.mp4"
sleep 1.5
kill "$tone"
pw-cli destroy speaker >/dev/null 2>&1
sleep 2
start_tone
sleep 5
kill -INT "$recorder"
wait "$recorder" || fail "a lost microphone spoils the recording"
is_loud "$dir/lost.mp4" -t 1.5 || fail "the microphone is not heard before it is lost"
has_silence "$dir/lost.mp4" || fail "the microphone was not lost"
is_loud "$dir/lost.mp4" -sseof -1.5 || fail "the microphone does not come back"
echo "found, heard, ended within $took ms without the server's help, lost and found again"
