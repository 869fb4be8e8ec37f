#!/bin/sh
# The part of try_deb.sh that runs in the fresh system, as root.
set -eu
export DEBIAN_FRONTEND=noninteractive
export LC_ALL=C.UTF-8
apt-get update -qq
apt-get install -y -qq --no-install-recommends /morvane.deb >/install.log 2>&1 || { tail -n 20 /install.log; exit 1; }
# Only to look at it; the package has to do without.
apt-get install -y -qq --no-install-recommends xvfb imagemagick >>/install.log 2>&1
rm -rf /home/user
id user >/dev/null 2>&1 || useradd user
mkdir -p /home/user
chown user /home/user

as_user="setpriv --reuid user --regid user --clear-groups env -i HOME=/home/user PATH=/usr/bin:/bin LC_ALL=C.UTF-8"

$as_user morvane-record --source scene --seconds 2 --texture Frame --filter 5 /home/user/film.mp4
Xvfb :77 -screen 0 800x1360x24 -nolisten tcp >/xvfb.log 2>&1 &
sleep 2
$as_user DISPLAY=:77 morvane >/morvane.log 2>&1 &
program=$!
sleep 8
kill -0 "$program" 2>/dev/null || { echo "The program has ended:"; cat /morvane.log; exit 1; }
DISPLAY=:77 import -window root /morvane.png
echo "On the error stream:"
cat /morvane.log
colors=$(identify -format %k /morvane.png)
echo "Colours in the picture: $colors"
[ "$colors" -gt 100 ] || { echo "There is nothing to be seen."; exit 1; }

kill "$program"
wait "$program" || true
