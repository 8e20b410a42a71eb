#!/usr/bin/env bash
# Installs the Debian packages EditorUtil builds and tests with, and only those that are
# missing, so running it again on a ready machine does nothing and needs no network.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qtbase5-dev qttools5-dev-tools libqt5svg5-dev
  libboost-dev libgoogle-glog-dev
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev ffmpeg
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  xvfb clang-format gcovr
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

echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
