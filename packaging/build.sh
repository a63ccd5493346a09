#!/usr/bin/env bash
# Makes the Debian packages with dpkg-buildpackage from a copy of the source: DIRECTORY/*.deb.
#   packaging/build.sh DIRECTORY
set -euo pipefail
mkdir -p "$1"
directory=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
copy=$directory/zspsc-$(dpkg-parsechangelog -S Version)
rm -rf "$directory"/{*.deb,*.dsc,*.tar.*,*.changes,*.buildinfo} "$copy"
mkdir "$copy"
git ls-files -z --cached --others --exclude-standard | xargs -0 cp --parents -t "$copy"
cd "$copy"
dpkg-buildpackage --no-sign >"$directory/log" 2>&1 || { tail -n 40 "$directory/log" && false; }
