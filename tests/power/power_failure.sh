#!/bin/bash
# Cuts the power of a disk while a film is recorded onto it, or shortly after, and looks at what is left.
#
# usage: power_failure.sh MORVANE_RECORD [COUNT [SECONDS]]
# COUNT cuts (12), up to SECONDS after the recording has ended (3), spread over XFS and ext4 on loop devices. Prints a line
# for each cut and fails when a film does not play up to two seconds before it, or a completed one is not complete.
record=$1 count=${2:-12} after=${3:-3}
for tool in mkfs.xfs mkfs.ext4 xfs_io losetup ffprobe; do
  command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed"; exit 77; }
done
[ "$(id -u)" -eq 0 ] && losetup -f >/dev/null 2>&1 || { echo "skipped: loop devices are not to be had"; exit 77; }

work=$(mktemp -d)
clean_up() {
  for disk in "$work"/*/disk; do umount "$disk" 2>/dev/null; done
  rm -rf "$work"
}
trap clean_up EXIT
probe=$work/probe
mkdir "$probe" && truncate -s 300M "$probe.img" && mkfs.ext4 -q "$probe.img"
mount -o loop "$probe.img" "$probe" 2>/dev/null || { echo "skipped: loop devices are not to be had"; exit 77; }
umount "$probe"

now() { date +%s%N; }

# Cuts once. $1: number, which decides the file system, the moment, and whether another program syncs before it
cut() {
  local number=$1 dir=$work/$1 options=loop kind=ext4 pid end length frames begun seconds
  mkdir -p "$dir/disk"
  truncate -s 400M "$dir/image"
  RANDOM=$((number * 7919 + ${SEED:-1}))
  if [ $((number % 2)) -eq 0 ]; then kind=xfs; mkfs.xfs -q "$dir/image"; else mkfs.ext4 -q "$dir/image"; options=loop,noauto_da_alloc; fi
  mount -o $options "$dir/image" "$dir/disk" || return 1
  local film=$dir/disk/film.mp4 filming=$((number / 2 % 2)) other=$((number / 4 % 2))
  seconds=$([ $filming -eq 1 ] && echo 60 || echo 3)
  "$record" --source scene --size 320x240 --seconds "$seconds" --microphone tone "$film" >"$dir/out" 2>&1 &
  pid=$!
  for ((i = 0; i < 600; ++i)); do [ -s "$film" ] && break; sleep 0.05; done
  begun=$(now)
  if [ $filming -eq 1 ]; then
    sleep "$((3 + RANDOM % 4)).$((RANDOM % 10))"
  else
    wait $pid || { echo "$number: the recording failed: $(cat "$dir/out")"; return 1; }
    sleep "$((RANDOM % after)).$((RANDOM % 10))"
  fi
  [ $other -eq 1 ] && dd if=/dev/zero of="$dir/disk/other" bs=4k count=4 conv=fsync status=none
  end=$(now)
  xfs_io -x -c shutdown "$dir/disk"
  kill -9 $pid 2>/dev/null
  wait $pid 2>/dev/null
  umount "$dir/disk" && mount -o $options "$dir/image" "$dir/disk" || return 1
  length=$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 "$film" 2>"$dir/why" |
    tr -dc '0-9')
  frames=${length:-0}
  # A busy machine drops frames: completed films have as many as the program says, the others reach as far in time.
  local least=$(((end - begun) * 30 / 1000000000 - 60)) result=ok
  if [ $filming -eq 1 ]; then
    frames=$(ffprobe -v error -select_streams v -show_entries packet=pts_time -of csv=p=0 "$film" 2>/dev/null |
      awk -F, '{ last = $1 } END { print int(last * 30) + 1 }')
  else
    least=$(sed -n 's/^\([0-9]*\) frames, .*/\1/p' "$dir/out")
  fi
  if [ "$frames" -lt "${least:-1000}" ] || { [ $filming -eq 0 ] && [ -s "$dir/why" ]; }; then result=FAILED; fi
  echo "$number: $kind $([ $filming -eq 1 ] && echo 'while filming' || echo 'completed') $([ $other -eq 1 ] && echo 'after a sync'): $frames frames, at least $least: $result"
  umount "$dir/disk"
  rm -f "$dir/image"
  [ $result = ok ]
}

failed=0
# Two at a time: more of them would be a load of their own, under which frames wait for the encoder.
for ((first = 0; first < count; first += 2)); do
  pids=()
  for ((number = first; number < first + 2 && number < count; ++number)); do cut $number & pids+=($!); done
  for pid in "${pids[@]}"; do wait "$pid" || failed=1; done
done
exit $failed
