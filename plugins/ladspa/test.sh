#!/usr/bin/env bash
# Runs the plug-in in SoX and in FFmpeg: a quiet tone burst comes out louder, within the gain limit,
# and both hosts, with their different block lengths, give the same samples.
#   test.sh DIRECTORY_OF_THE_PLUGIN
set -euo pipefail
command -v sox >/dev/null || exit 77
export LADSPA_PATH=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Ten seconds of a 440 Hz tone at -36 dBFS in bursts of one second, a pause of half a second between
sox -n -r 8000 -b 16 -c 1 "$work/in.wav" synth 1 sine 440 gain -36 pad 0 0.5 repeat 6
# SoX wants a value for the output port "latency" too.
sox -D "$work/in.wav" "$work/sox.wav" ladspa zspsc_alc zspsc_alc 11.6 -26 0 0
rms() { sox "$1" -n trim 8 stat 2>&1 | awk '/RMS.*amplitude/ {print $3}'; }
awk -v before="$(rms "$work/in.wav")" -v after="$(rms "$work/sox.wav")" 'BEGIN {
    gain = 20 * log(after / before) / log(10); print "gain in SoX: " gain " dB"
    exit !(gain > 6 && gain < 11.7) }'

command -v ffmpeg >/dev/null || exit 0
ffmpeg -v error -i "$work/in.wav" -af "ladspa=file=zspsc_alc:plugin=zspsc_alc:controls=c0=11.6|c1=-26|c2=0" \
    -c:a pcm_s16le "$work/ffmpeg.wav"
# SoX leaves its output block by block as well: the samples both have in common are equal.
samples=$(soxi -s "$work/ffmpeg.wav")
cmp <(sox "$work/sox.wav" -t s16 - trim 0 "$((samples - 8))s") \
    <(sox "$work/ffmpeg.wav" -t s16 - trim 0 "$((samples - 8))s")
echo "SoX and FFmpeg agree on $samples samples"
