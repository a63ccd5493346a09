#!/usr/bin/env bash
# Makes the inputs in corpus/ again: some files as other programs write them, then the shortest of
# what each fuzzer finds from them in some runs. What has once ended a fuzzer stays:
# its name begins with "fault-".
#
#   tests/fuzz/make_corpus.sh BUILD_DIR [TARGET...]     of the preset fuzz; all targets
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/corpus"
build=$(cd - >/dev/null && cd "$1" && pwd)
shift
seeds=$(mktemp -d)
trap 'rm -r "$seeds"' EXIT

make_seeds() {
    local audio="$seeds/audio_file" coded="$seeds/coded_file" line="$seeds/command_line"
    mkdir -p "$audio" "$coded" "$line" "$seeds/fmtp" "$seeds"/{amr,rtp}_payload
    sox -R -n -r 8000 -b 16 "$audio/linear.wav" synth 0.02 sine 440
    for kind in au flac aiff w64; do sox "$audio/linear.wav" "$audio/linear.$kind"; done
    sox "$audio/linear.wav" -e a-law "$audio/a.wav"
    sox "$audio/linear.wav" -e floating-point -b 32 "$audio/float.wav"
    sox "$audio/linear.wav" -t wav - | cat >"$audio/piped.wav"
    sox -R -n -r 16000 -c 2 -b 24 "$audio/stereo.wav" synth 0.01 sine 300
    sox -R -n -r 44100 "$audio/fast.au" synth 0.005 sine 3000
    cp "$audio/a.wav" "$coded"
    tail -c 156 "$audio/linear.wav" >"$coded/raw"
    ffmpeg -loglevel error -f lavfi -i sine=r=8000:d=0.02 -c:a g726 -b:a 32k \
        -fflags +bitexact "$coded/g726.wav"
    ffmpeg -loglevel error -f lavfi -i sine=r=16000:d=0.02 -c:a g722 \
        -fflags +bitexact "$coded/g722.wav"
    printf 'encode\n--codec\ng726\n--rate=24\n-f\nraw\nin.wav\nout.g726' >"$line/encode"
    printf 'decode\n-c\npcma\n-l\nmu\n-u\n-f\nau\n-\n-o\nx.au' >"$line/decode"
    printf 'aec\n--far\nfar.wav\n--mic\nmic.wav\n--suppressor\non\n--tail\n64\nout.wav' >"$line/aec"
    printf 'vad\n--detector\namrwb\n--dtx\n--report\nr.html\nin.wav\nout.csv' >"$line/vad"
    printf 'alc\n--target\n20\n--max-gain\n12\n--peak\n3\nin.wav\n--\n-out.wav' >"$line/alc"
    printf 'info\n--exports' >"$line/info"
    printf 'codecs\n--names' >"$line/codecs"
    # The form, then payloads of a frame, of two, of AMR-WB, and without alignment.
    local bits
    bits=$(printf 'U%.0s' {1..40})
    { printf '\2\360\074'; printf '%.31s' "$bits"; } >"$seeds/amr_payload/speech"
    { printf '\2\060\274\104'; printf '%.36s' "$bits"; } >"$seeds/amr_payload/two"
    { printf '\3\360\014'; printf '%.23s' "$bits"; } >"$seeds/amr_payload/wide"
    { printf '\0\363\325'; printf '%.29sT' "$bits"; } >"$seeds/amr_payload/efficient"
    printf '\0\0octet-align=1; mode-set=0,2,4,7; mode-change-period=2\nmode-change-capability=2' \
        >"$seeds/fmtp/amr"
    printf '\1\0mode-change-neighbor=1;max-red=220;channels=1\ncrc=1;robust-sorting=0;interleaving=4' \
        >"$seeds/fmtp/amrwb"
    printf '\2\0annexa=no\nbitrate=5.3' >"$seeds/fmtp/g723"
    printf '\3\0annexb=no\nannexb=yes' >"$seeds/fmtp/g729"
}

# The seeds of a target, and what it finds in some thousand runs, as at most twelve short inputs.
make_corpus() {
    local name=$1 target=${1%%/*} options=() work="$seeds/work" input
    [ "$target" = "$name" ] || options=("--family=${name#*/}")
    rm -rf "$work" && mkdir -p "$work/found" "$work/merged" "$name" "$seeds/$name"
    "$build/bin/zspsc_fuzz_$target" "${options[@]}" -seed=1 -runs=1000 -max_len=400 -len_control=0 \
        -artifact_prefix="$build/" "$work/found" "$seeds/$name" >"$work/log" 2>&1 ||
        { tail -30 "$work/log"; return 1; }
    "$build/bin/zspsc_fuzz_$target" "${options[@]}" -merge=1 -max_len=400 \
        "$work/merged" "$work/found" >>"$work/log" 2>&1
    find "$name" -type f ! -name 'fault-*' -delete
    find "$seeds/$name" -type f -exec cp {} "$name" \;
    find "$work/merged" -type f -size +31c -printf '%f\n' | sort | head -8 |
        while read -r input; do cp "$work/merged/$input" "$name/${input:0:12}"; done
    echo "$name: $(find "$name" -type f | wc -l) inputs, $(du -bs "$name" | cut -f1) bytes"
}

make_seeds
[ $# -gt 0 ] || set -- $("$build/bin/zspsc_fuzz_blocks" --families | sed 's,^,blocks/,') \
    amr_payload audio_file coded_file command_line comfort_noise fmtp rtp_payload voice_coders
for target in "$@"; do make_corpus "$target"; done
