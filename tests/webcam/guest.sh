#!/bin/bash
# The job in the guest: takes rows that no other guest has taken, first those without a sound and picture server, then
# those with PipeWire.
# shellcheck disable=SC2154  # /out/settings sets tests, bin and guest
. /out/settings
export bin GST_REGISTRY GST_REGISTRY_UPDATE=no HOME=/run/home

take_rows() {
  local row log=/run/log
  while read -r row; do
    mkdir "/out/$row/taken" 2>/dev/null || continue
    timeout -k 10 120 bash "$tests/row.sh" "/out/$row" >"$log" 2>&1 </dev/null || echo "ended with $?" >>"$log"
    cp "$log" "/out/$row"
  done <"$1"
}

# Brings the program and its plugins over from the host, which takes long: a row like the others that nobody looks at.
warm_up() {
  local folder=/run/warm_up
  mkdir -p "$folder"
  echo 'webcam 0 --mode MJPEG:320x240@30; film; window; shown 1; close_window' >"$folder/script"
  timeout -k 10 120 bash "$tests/row.sh" "$folder" >/dev/null 2>&1 </dev/null
  rm -rf "$folder"
}

# within SECONDS COMMAND...
within() {
  local turns=$(($1 * 10))
  shift
  for _ in $(seq "$turns"); do "$@" >/dev/null 2>&1 && return || sleep 0.1; done
  echo "guest $guest: in vain: $*" >/dev/console
  return 1
}
has_session_manager() { pw-cli ls Client | grep -q WirePlumber; }

if [ "${1:-}" = pipewire ]; then
  export XDG_RUNTIME_DIR=/run/user PIPEWIRE_RUNTIME_DIR=/run/user
  mkdir -m 700 "$XDG_RUNTIME_DIR"
  # Without these folders of logind's, WirePlumber takes its leave.
  mkdir -p /run/systemd/seats /run/systemd/sessions /run/systemd/users /run/systemd/machines
  pipewire &
  within 20 pw-cli info 0
  wireplumber &
  pipewire-pulse &
  within 20 has_session_manager && take_rows /out/rows.pipewire
  exit
fi

mkdir -p "$HOME"
echo "guest $guest: the job begins after $(cut -d' ' -f1 /proc/uptime) s"
/lib/systemd/systemd-udevd --daemon 2>/dev/null
udevadm trigger
udevadm settle
modprobe -a uvcvideo vhci-hcd
udevadm settle
warm_up
take_rows /out/rows.plain
if [ -s /out/rows.pipewire ]; then dbus-run-session -- bash "$0" pipewire >"/out/pipewire.$guest" 2>&1; fi
dmesg >"/out/dmesg.$guest"
echo "guest $guest: the job ends after $(cut -d' ' -f1 /proc/uptime) s"
echo o >/proc/sysrq-trigger
sleep 60
