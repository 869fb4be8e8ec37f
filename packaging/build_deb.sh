#!/bin/sh
# Makes the Debian package for the system that this runs on, in build-deb. Arguments go to CMake, for example
# -DMORVANE_ATTRIBUTION_HOST=reports.example.org
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
install_packages $build_packages $deb_packages
cmake -S . -B build-deb -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF -DMORVANE_BENCH=OFF "$@" >/dev/null
cmake --build build-deb
rm -f build-deb/*.deb
(cd build-deb && cpack >/dev/null)
echo "The package is $(ls "$PWD"/build-deb/*.deb)"
