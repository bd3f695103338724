# shellcheck shell=bash disable=SC2034
# Sourced by the scripts: goes to the top of the tree and brings what they share. No state of the machine is assumed
# but Debian 12 with root or sudo.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C.UTF-8

jobs=$(nproc)
build_packages=(cmake ninja-build g++ libgtest-dev)

note() { printf '== %s\n' "$*" >&2; }
fail() { printf 'FAILED: %s\n' "$*" >&2; return 1; }

is_installed() { [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

# need PACKAGE...: installs those that are missing.
need() {
  local missing=() sudo=() package
  for package in "$@"; do is_installed "$package" || missing+=("$package"); done
  ((${#missing[@]})) || return 0
  note "installing ${missing[*]}"
  ((EUID == 0)) || sudo=(sudo)
  {
    "${sudo[@]}" apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qq --no-install-recommends "${missing[@]}"
  } >&2 </dev/null
}

# build PRESET [TARGET...]: configures and builds build/PRESET, the default targets when none is named.
build() {
  local preset=$1
  shift
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs" -t "${@:-all}" -- --quiet >&2
}

# Every C++ file of ours under the given directories.
sources() { find "$@" -name '*.h' -o -name '*.cpp' | sort; }
