#!/usr/bin/env bash
# Installs what a fresh Debian bookworm machine lacks to build and test the
# project; shared by the README commands and CI. Installs only what is missing.
set -euo pipefail
need=(cmake ninja-build g++ clang libclang-rt-14-dev pkg-config libgtest-dev libgmock-dev
      libbenchmark-dev libcairo2-dev libagg-dev zlib1g-dev libpng-dev libfreetype-dev
      libfontconfig-dev libcli11-dev fonts-dejavu-core libwebp-dev ffmpeg libsdl2-dev xvfb xauth
      desktop-file-utils shared-mime-info emscripten chromium)
missing=()
for p in "${need[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
# Node.js may come from another package source that bundles npm; only a
# machine without it gets Debian's.
command -v node >/dev/null || missing+=(nodejs)
command -v npm >/dev/null || missing+=(npm)
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}" >/dev/null
fi
