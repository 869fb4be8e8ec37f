#!/bin/sh
# Checks what tells a desktop about the program. The least warning fails.
set -eu
cd "$(dirname "$0")"
complaints=$(desktop-file-validate morvane.desktop 2>&1) || true
if [ -n "$complaints" ]; then
  echo "$complaints"
  exit 1
fi
appstreamcli validate --no-net --no-color org.morvane.Morvane.metainfo.xml
# They speak of the same things.
grep -q '<launchable type="desktop-id">morvane.desktop</launchable>' org.morvane.Morvane.metainfo.xml
grep -qx 'Exec=morvane' morvane.desktop
grep -qx 'Icon=morvane' morvane.desktop
