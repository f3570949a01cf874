#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
# Runs unattended as root; `apt-get update` only when a package is missing.
set -euo pipefail

packages=(
  cmake ninja-build ccache g++ make pkg-config
  qtbase5-dev qtbase5-dev-tools libqt5svg5-dev libqt5networkauth5-dev qtscript5-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libsqlite3-dev
  clang libclang-rt-14-dev
  xvfb xauth
  desktop-file-utils appstream shared-mime-info dpkg-dev lintian
  rsync
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
if ! $sudo apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null 2>&1; then
  $sudo apt-get update -q >/dev/null
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
fi
