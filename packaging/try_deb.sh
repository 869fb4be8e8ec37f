#!/bin/sh
# Installs a package in a fresh Debian 12, starts the program there on a display of its own, records a film, and takes
# a picture of the window. Nothing of this computer is in that system but its package sources.
# Usage: try_deb.sh FILE.deb [SCREENSHOT.png]. MORVANE_TRY_ROOT keeps the system in a folder and uses it again.
set -eu
package=$(realpath "$1")
picture=$(realpath -m "${2:-morvane.png}")
cd "$(dirname "$0")/.."
. scripts/packages.sh

if [ "$(id -u)" -ne 0 ] || ! unshare --mount --pid --fork true 2>/dev/null; then
  echo "A system of its own needs root rights and namespaces, which there are none of here: nothing was tried." >&2
  exit 1
fi
install_packages debootstrap

if [ -n "${MORVANE_TRY_ROOT:-}" ]; then
  root=$(realpath -m "$MORVANE_TRY_ROOT")
else
  root=$(mktemp -d)
  trap 'rm -rf --one-file-system "$root"' EXIT
fi
if [ ! -e "$root/fresh" ]; then
  mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Created-By: Packages' |
    sed -n 's/ bookworm$//p' | head -n 1)
  debootstrap --variant=minbase bookworm "$root" "${mirror:?no sources of Debian 12 in this system}" >"$root.log" 2>&1 ||
    { tail "$root.log"; exit 1; }
  touch "$root/fresh"
fi
rm -f "$root.log"
rm -rf "$root"/etc/apt/sources.list "$root"/etc/apt/sources.list.d
cp -r /etc/apt/sources.list* "$root/etc/apt/"
cp /etc/resolv.conf "$root/etc/"
cp "$package" "$root/morvane.deb"
cp packaging/try_inside.sh "$root/"

# What is mounted and started in there goes with the namespaces, however this ends.
unshare --mount --pid --fork sh -eu -c '
  mount -t proc proc "$1/proc"
  mount -t tmpfs tmpfs "$1/tmp"
  mount --rbind /dev "$1/dev"
  exec chroot "$1" sh /try_inside.sh' sh "$root"
cp "$root/morvane.png" "$picture"
echo "The window is in $picture"
