#!/usr/bin/env bash
# Installs the Debian packages the project builds with, quietly and only when missing.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config libgtest-dev libicu-dev libpcre2-dev libxml2-dev libgmime-3.0-dev tzdata)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
