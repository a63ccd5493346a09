#!/usr/bin/env bash
# Builds the Debian packages, has lintian look at them, installs them on this machine, uses each,
# and removes them again. Needs root and Debian.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "packaging/check.sh installs packages: run it as root" >&2; exit 1; }

. cmake/packages.sh
install_packages "${library_packages[@]}" "${tool_packages[@]}" doxygen dpkg-dev ffmpeg file ladspa-sdk \
    lintian

cmake --workflow --preset package
packages=(build/package/*.deb)
echo "== lintian"
lintian --fail-on error "${packages[@]}"

echo "== Install"
dpkg -i "${packages[@]}"
names=(zsp libzspsc-dev libzspvoice1 libzspsc8)
trap 'dpkg --purge "${names[@]}" >/dev/null' EXIT

work=$(mktemp -d)
consumer=tests/package/consumer
for library in zspsc zspvoice; do
    [ "$(pkg-config --variable=prefix "$library")" = /usr ]
done
cc $consumer/consumer.c -o "$work/by_pkg_config" $(pkg-config --cflags --libs zspsc)
cc $consumer/voice.c -o "$work/voice_by_pkg_config" $(pkg-config --cflags --libs zspvoice)
"$work/by_pkg_config"
"$work/voice_by_pkg_config"
cmake -S $consumer -B "$work/cmake" >/dev/null
cmake --build "$work/cmake" >/dev/null
for program in "$work"/cmake/{shared,static}_*; do "$program"; done
zsp info
zsp demo -o "$work/demo" >/dev/null
test -s "$work/demo/report.html"
for plugin in alc aec; do # found without a word about where it lies
    ffmpeg -v error -f lavfi -i "sine=r=8000:d=1,aformat=cl=$([ $plugin = aec ] && echo stereo || echo mono)" \
        -af "ladspa=file=zspsc_$plugin:plugin=zspsc_$plugin" -f null -
done
man -w zsp >/dev/null 2>&1 || test -e /usr/share/man/man1/zsp.1.gz

echo "== Remove"
trap - EXIT
dpkg --purge "${names[@]}"
left=$(find /usr -iname '*zspsc*' -o -iname '*zspvoice*' -o -iname '*zspcore*' -o -path '*/bin/zsp')
[ -z "$left" ] || { echo "left behind: $left" >&2; exit 1; }
rm -rf "$work"
echo "The packages install, run and go without a trace."
