#!/usr/bin/env bash
# Runs the plug-ins in SoX and in FFmpeg, whose block lengths differ: both give the same samples.
# The level control raises a quiet tone within its gain limit; the echo canceller removes 30 dB of a
# simulated echo, with the very samples of the command-line host, and refuses other rates.
#   test.sh DIRECTORY_OF_THE_PLUGINS SPEECH_8K.wav PROGRAM_ZSP
set -euo pipefail
command -v sox >/dev/null || exit 77
export LADSPA_PATH=$1
speech=$2 zsp=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

rms() { sox "$1" -n trim "$2" stat 2>&1 | awk '/RMS.*amplitude/ {print $3}'; }
# expect_gain BEFORE AFTER LOW HIGH: the change of level in dB
expect_gain() {
    awk -v before="$1" -v after="$2" -v low="$3" -v high="$4" 'BEGIN {
        gain = 20 * log(after / before) / log(10); print "level changed by " gain " dB"
        exit !(gain > low && gain < high) }'
}
# expect_equal A A_EFFECTS B B_EFFECTS SAMPLES: as many samples of both, from the first one on
expect_equal() {
    cmp <(sox "$1" -t s16 - $2 trim 0 "$5s") <(sox "$3" -t s16 - $4 trim 0 "$5s")
    echo "$1 and $3 agree on $5 samples"
}

echo "== level control"
# Ten seconds of a 440 Hz tone at -36 dBFS in bursts of one second, a pause of half a second between
sox -n -r 8000 -b 16 -c 1 tone.wav synth 1 sine 440 gain -36 pad 0 0.5 repeat 6
# SoX wants values for the output ports too.
sox -D tone.wav alc_sox.wav ladspa zspsc_alc zspsc_alc 11.6 -26 0 0
expect_gain "$(rms tone.wav 8)" "$(rms alc_sox.wav 8)" 6 11.7

echo "== echo canceller"
# The loudspeaker's sound comes back after 30 and 44.5 ms, the far end is the second channel.
sox -D "$speech" first.wav pad 0.03 gain -8
sox -D "$speech" second.wav pad 0.0445 gain -14
sox -D -m first.wav second.wav mic.wav vol 2
sox -D -M mic.wav "$speech" call.wav
sox -D call.wav both.wav ladspa zspsc_aec zspsc_aec 0 0 0 0
sox -D both.wav aec_sox.wav remix 1
expect_gain "$(rms mic.wav 10)" "$(rms aec_sox.wav 10)" -90 -30
"$zsp" aec "$speech" mic.wav aec_zsp.wav
samples=$(($(soxi -s mic.wav) - 320))
expect_equal aec_zsp.wav "" aec_sox.wav "trim 240s" "$samples" # 10 ms beside the canceller's 20
sox -D -n -r 44100 -c 2 -b 16 other.wav synth 0.1 sine 440
if sox -D other.wav refused.wav ladspa zspsc_aec zspsc_aec 0 0 0 0 2>/dev/null; then
    echo "44100 Hz was not refused" >&2
    exit 1
fi

command -v ffmpeg >/dev/null || exit 0
echo "== FFmpeg"
ffmpeg -v error -i tone.wav -c:a pcm_s16le \
    -af "ladspa=file=zspsc_alc:plugin=zspsc_alc:controls=c0=11.6|c1=-26|c2=0" alc_ffmpeg.wav
ffmpeg -v error -i call.wav -c:a pcm_s16le \
    -af "ladspa=file=zspsc_aec:plugin=zspsc_aec:controls=c0=0|c1=0" aec_ffmpeg.wav
# SoX leaves its output block by block as well: the samples both have in common are equal.
for plugin in alc aec; do
    samples=$(($(soxi -s "${plugin}_ffmpeg.wav") - 160))
    expect_equal "${plugin}_sox.wav" "" "${plugin}_ffmpeg.wav" "" "$samples"
done
