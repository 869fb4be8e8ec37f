#!/bin/sh
# Installs a build into a folder of its own and looks whether the installed programs find what is theirs.
# Usage: check_install.sh BUILD_DIR
set -eu
build=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
cmake --install "$build" --prefix "$root/usr" >/dev/null

for file in bin/morvane bin/morvane-record share/applications/morvane.desktop \
    share/metainfo/org.morvane.Morvane.metainfo.xml share/icons/hicolor/scalable/apps/morvane.svg \
    share/morvane/native/assets/Settings.qml share/morvane/native/assets/images; do
  [ -e "$root/usr/$file" ] || { echo "not installed: $file"; exit 1; }
done

# A texture is read from the installed package; the build's own is out of the program's reach.
"$root/usr/bin/morvane-record" --source scene --size 320x240 --seconds 1 --microphone none --texture Frame \
  "$root/film.mp4"
[ -s "$root/film.mp4" ]
