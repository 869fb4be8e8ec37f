#!/bin/bash
# The job in the guest: takes rows that no other guest has taken, first those without a sound and picture server, then
# those with PipeWire.
. /out/settings
export bin GST_REGISTRY GST_REGISTRY_UPDATE=no HOME=/run/home

take_rows() {
  while read -r row; do
    mkdir "/out/$row/taken" 2>/dev/null || continue
    timeout -k 10 120 bash "$tests/row.sh" "/out/$row" >"/out/$row/log" 2>&1 || echo "ended with $?" >>"/out/$row/log"
  done <"$1"
}

if [ "${1:-}" = pipewire ]; then
  export XDG_RUNTIME_DIR=/run/user PIPEWIRE_RUNTIME_DIR=/run/user
  mkdir -p -m 700 "$XDG_RUNTIME_DIR"
  pipewire &
  until [ -S "$XDG_RUNTIME_DIR/pipewire-0" ]; do sleep 0.1; done
  wireplumber &
  pipewire-pulse &
  until pw-cli ls Client 2>/dev/null | grep -q WirePlumber; do sleep 0.1; done
  take_rows /out/rows.pipewire
  exit
fi

mkdir -p "$HOME"
echo "the job begins after $(cut -d' ' -f1 /proc/uptime) s"
/lib/systemd/systemd-udevd --daemon 2>/dev/null
udevadm trigger
udevadm settle
modprobe -a uvcvideo vhci-hcd
udevadm settle
take_rows /out/rows.plain
if [ -s /out/rows.pipewire ]; then dbus-run-session -- bash "$0" pipewire >"/out/pipewire.$$" 2>&1; fi
dmesg >"/out/dmesg.$RANDOM"
echo "the job ends after $(cut -d' ' -f1 /proc/uptime) s"
echo o >/proc/sysrq-trigger
sleep 60
