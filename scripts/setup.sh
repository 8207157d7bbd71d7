#!/usr/bin/env bash
# Installs the Debian packages the project builds and tests with, if missing.
set -euo pipefail
packages=(build-essential cmake pkg-config libcjson-dev libgtest-dev libgmock-dev libbenchmark-dev
  libsndfile1-dev libsoxr-dev libpng-dev libspeexdsp-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
