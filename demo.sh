#!/usr/bin/env bash
# Builds the library and its host, codes speech with them and writes a report. Installs missing
# Debian packages first.
#
#   ./demo.sh [speech.wav] [-o directory]      bundled speech and demo-out/ here by default
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

. "$root/cmake/packages.sh"
install_packages "${library_packages[@]}" "${tool_packages[@]}"

echo "Building the library and zsp in $root/build/demo"
if ! log=$(cd "$root" && cmake --workflow --preset demo 2>&1); then
    printf '%s\n' "$log" >&2
    exit 1
fi

echo "Running zsp demo"
exec "$root/build/demo/bin/zsp" demo -o "$root/demo-out" "$@"
