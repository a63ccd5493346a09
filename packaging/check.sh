#!/usr/bin/env bash
# Builds the Debian packages, has lintian look at them, installs them on this machine, uses each,
# and removes them again. Needs root and Debian.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "packaging/check.sh installs packages: run it as root" >&2; exit 1; }

. cmake/packages.sh
install_packages "${library_packages[@]}" "${tool_packages[@]}" "${deb_packages[@]}"

work=$PWD/build/packages
packaging/build.sh "$work"
packages=("$work"/*.deb)

echo "== lintian"
lintian --fail-on error,warning "$work"/*.changes

echo "== Install"
dpkg -i "${packages[@]}" >"$work/log"
mapfile -t names < <(for file in "${packages[@]}"; do dpkg-deb -f "$file" Package; done)
trap 'dpkg --purge "${names[@]}" >/dev/null' EXIT

trial=$work/trial
rm -rf "$trial"
mkdir -p "$trial"
consumer=tests/package/consumer
for library in zspsc zspvoice; do
    [ "$(pkg-config --variable=prefix "$library")" = /usr ]
done
cc $consumer/consumer.c -o "$trial/by_pkg_config" $(pkg-config --cflags --libs zspsc)
cc $consumer/voice.c -o "$trial/voice_by_pkg_config" $(pkg-config --cflags --libs zspvoice)
"$trial/by_pkg_config"
"$trial/voice_by_pkg_config"
cmake -S $consumer -B "$trial/cmake" >/dev/null
cmake --build "$trial/cmake" >/dev/null
for program in "$trial"/cmake/{shared,static}_*; do "$program"; done

doc=/usr/share/doc/libzspsc-dev
for example in $doc/examples/{blocks,voice}/*.c; do
    cc -I$doc "$example" -o "$trial/example" $(pkg-config --cflags --libs zspvoice) -lm -pthread
    "$trial/example" >/dev/null
    echo "${example#$doc/}: builds and runs"
done

zsp info
zsp demo -o "$trial/demo" >/dev/null
test -s "$trial/demo/report.html"
for plugin in alc aec; do # found without a word about where it lies
    ffmpeg -v error -f lavfi -i "sine=r=8000:d=1,aformat=cl=$([ $plugin = aec ] && echo stereo || echo mono)" \
        -af "ladspa=file=zspsc_$plugin:plugin=zspsc_$plugin" -f null -
    echo "FFmpeg finds the plug-in $plugin"
done
(cd / && /usr/bin/python3 -c 'import zspsc' && echo "Python finds its package")

# Coded speech for others: SoX and FFmpeg play GSM full rate, FFmpeg G.723.1. SoX and that hear the
# same; FFmpeg's decoder of GSM does not saturate.
sox -R -n -r 8000 -b 16 "$trial/tone.wav" synth 1.2 sine 440 gain -6
for codec in gsm g723; do
    zsp encode "$trial/tone.wav" "$trial/tone.$codec"
    zsp decode "$trial/tone.$codec" "$trial/$codec.raw"
    demuxer=$([ $codec = gsm ] && echo gsm || echo g723_1)
    ffmpeg -v error -y -f "$demuxer" -i "$trial/tone.$codec" -f s16le "$trial/ffmpeg-$codec.raw"
    [ "$(stat -c %s "$trial/ffmpeg-$codec.raw")" = "$(stat -c %s "$trial/$codec.raw")" ]
done
sox "$trial/tone.gsm" -t raw "$trial/sox-gsm.raw"
cmp "$trial/gsm.raw" "$trial/sox-gsm.raw"
cmp "$trial/g723.raw" "$trial/ffmpeg-g723.raw"
echo "SoX and FFmpeg play .gsm, FFmpeg plays .g723"

# Pages that man finds: the host's, a family's, a function's; and the reference.
for page in usr/share/man/man1/zsp.1 usr/share/man/man3/zspsc_g726.3 \
    usr/share/man/man3/zspsMul_NR_16s_Sfs.3 usr/share/man/man3/zspvEncode.3; do
    [ -z "$(zcat "/$page.gz" | LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l - 2>&1 >/dev/null)" ]
done
grep -q zspsMul_NR_16s_Sfs /usr/share/doc/zspsc/html/*.html

echo "== Remove"
trap - EXIT
dpkg --purge "${names[@]}" >>"$work/log"
left=$(find /usr -iname '*zspsc*' -o -iname '*zspvoice*' -o -iname '*zspcore*' -o -path '*/bin/zsp')
[ -z "$left" ] || { echo "left behind: $left" >&2; exit 1; }
echo "The packages install, run and go without a trace."
