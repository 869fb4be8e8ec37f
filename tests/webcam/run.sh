#!/bin/bash
# Films with cameras that are not there: virtual machines whose kernel has them run the built programs.
# Usage: run.sh BUILD [ROW...]: the quick rows, the named ones, or "all". `./test webcam` calls it when everything is built.
# MORVANE_WEBCAM_REPEAT=N runs each row N times.
set -eu
PATH=$PATH:/usr/sbin:/sbin
tests=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
shift
. "$tests/../../scripts/packages.sh"
work=$build/webcam
out=$work/out
guests=${MORVANE_WEBCAM_GUESTS:-2}
# The whole run; without a limit a guest that hangs would hang whoever waits for it.
patience=${MORVANE_WEBCAM_SECONDS:-600}

skip() {
  echo "webcam: skipped: $*"
  exit 0
}

# The kernel that the distribution would boot, unpacked; never installed. Sets $version and $kernel.
get_kernel() {
  package=$(apt-cache depends linux-image-amd64 2>/dev/null | sed -n 's/^ *Depends: \(linux-image-.*\)/\1/p' | head -n1)
  [ -n "$package" ] || skip "there is no kernel package"
  version=${package#linux-image-}
  kernel=$work/$package
  [ -e "$kernel/complete" ] && return
  rm -rf "$kernel"
  mkdir -p "$kernel"
  if ! ls "$work/$package"_*.deb >/dev/null 2>&1; then
    (cd "$work" && apt-get download -q "$package") >"$work/download.log" 2>&1 ||
      skip "the kernel package cannot be fetched"
  fi
  dpkg-deb -x "$work/$package"_*.deb "$kernel"
  depmod -b "$kernel" "$version"
  touch "$kernel/complete"
}

make_initramfs() {
  local root=$work/initramfs module
  rm -rf "$root"
  mkdir -p "$root/bin" "$root/proc" "$root/sys" "$root/dev"
  cp /bin/busybox "$root/bin"
  install -m 755 "$tests/init" "$root/init"
  for module in virtio_pci 9pnet_virtio 9p overlay; do
    modprobe -d "$kernel" -S "$version" --show-depends "$module"
  done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }' | while read -r module; do
    cp "$module" "$root"
    basename "$module"
  done >"$root/modules"
  (cd "$root" && find . | cpio -o -H newc --quiet) >"$work/initramfs.cpio"
}

# While a guest works, its time is counted in instructions, a thousand million to the second: to the programs in there
# it is a slow but even machine, however busy this one is. A share each for reading everything and for writing results.
# boot GUEST
boot() {
  timeout "$patience" qemu-system-x86_64 -accel tcg -cpu max -icount shift=0,sleep=on -smp 1 -m 2000 \
    -nodefaults -display none -serial stdio -no-reboot -nic none \
    -kernel "$kernel/boot/vmlinuz-$version" -initrd "$work/initramfs.cpio" \
    -append "console=ttyS0 quiet mitigations=off panic=-1 modules=$kernel/lib/modules job=$tests/guest.sh guest=$1" \
    -fsdev local,id=host,path=/,security_model=none,readonly=on,multidevs=remap \
    -device virtio-9p-pci,fsdev=host,mount_tag=host \
    -fsdev local,id=out,path="$out",security_model=none -device virtio-9p-pci,fsdev=out,mount_tag=out </dev/null
}

[ "$(uname -m)" = x86_64 ] || skip "the rows need an x86-64 machine"
# shellcheck disable=SC2086
install_packages $webcam_packages || skip "a package is missing"
mkdir -p "$work"
get_kernel
make_initramfs
rm -rf "$out"
mkdir -p "$out"
"$build/bin/test_webcam" --prepare "$out" "$@"
# Looking through all plugins takes a guest long.
GST_REGISTRY=$work/registry.bin gst-inspect-1.0 >/dev/null 2>&1
printf 'bin=%q\ntests=%q\nGST_REGISTRY=%q\n' "$build/bin" "$tests" "$work/registry.bin" >"$out/settings"

begun=$(date +%s)
running=()
trap 'kill "${running[@]}" 2>/dev/null || true' EXIT
for guest in $(seq "$guests"); do
  boot "$guest" >"$out/console.$guest" 2>&1 &
  running+=($!)
done
for guest in "${running[@]}"; do wait "$guest" || echo "webcam: a guest ended with $?, see $out/console.*"; done
running=()
echo "webcam: $guests guests ran for $(($(date +%s) - begun)) s"
"$build/bin/test_webcam" --check "$out" "$@"
