#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing adjustacc need.
# Safe to run again: it only calls apt-get when something is missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang libclang-rt-14-dev make pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-httpserver-dev qt6-websockets-dev qt6-qpa-plugins
  libqt6sql6-sqlite libqt6sql6-psql libgl-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  postgresql
  fonts-dejavu-core poppler-utils
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q
"${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
