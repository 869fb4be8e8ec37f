# shellcheck shell=sh disable=SC2034
# Which packages of the distribution the project needs, and installing what is missing. Sourced.

# To run: what the program loads by itself, so that no library it is linked with brings it.
run_packages="fonts-dejavu-core qt6-wayland qml6-module-qt-labs-folderlistmodel
  qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-dialogs qml6-module-qtquick-layouts
  qml6-module-qtquick-templates qml6-module-qtquick-window qml6-module-qtqml-workerscript
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-plugins-ugly
  gstreamer1.0-libav gstreamer1.0-x gstreamer1.0-pipewire gstreamer1.0-alsa gstreamer1.0-pulseaudio"

# To build and to run.
build_packages="g++ cmake ninja-build pkg-config
  libglib2.0-dev libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libavcodec-dev libhwy-dev libyuv-dev zlib1g-dev
  qt6-base-dev qt6-declarative-dev qt6-svg-dev libgl-dev $run_packages"

# To test: the frameworks, a second opinion on the films, a camera without hardware, a disk whose power fails.
test_packages="libgtest-dev libgmock-dev libbenchmark-dev ffmpeg dbus pipewire wireplumber gstreamer1.0-tools
  desktop-file-utils appstream xvfb xfsprogs e2fsprogs"

# To test with cameras in a virtual machine.
webcam_packages="qemu-system-x86 busybox-static kmod cpio udev v4l-utils pipewire-pulse $test_packages"

# To look at the sources: scripts/check.
check_packages="clang-format clang-tidy shellcheck"

# To make a package of the program.
deb_packages="dpkg-dev file"

# To make the README's pictures.
screenshot_packages="xvfb xdotool ffmpeg"

# For benchmarks: real footage.
bench_packages="forensics-samples-files"

# Prints those of the named packages that are not installed.
missing_packages() {
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || printf '%s ' "$package"
  done
}

# Installs what is missing; asks for root rights only then.
install_packages() {
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0
  if ! command -v apt-get >/dev/null; then
    echo "These packages are needed, and there is no apt-get to install them: $missing" >&2
    return 1
  fi
  as_root=
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Installing needs root rights: $missing" >&2; return 1; }
    as_root=sudo
  fi
  echo "Installing: $missing"
  $as_root apt-get update -qq
  # shellcheck disable=SC2086
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing >/dev/null
}
