#!/usr/bin/env bash
# Runs every fuzzer for some time, two at once: one per family of blocks that has a state, one per
# parser. They begin with the inputs in the tree and with what earlier runs have found.
#
#   tests/fuzz/run_fuzzers.sh BUILD_DIR SECONDS
set -euo pipefail
build=$(cd "$1" && pwd)
export build seconds=$2
corpus=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/corpus
export corpus
mkdir -p "$build/found" "$build/faults"

# TARGET or TARGET/FAMILY
run_one() {
    local name=$1 target=${1%%/*} log="$build/found/${1//\//_}.log" options=() folders=()
    [ "$target" = "$name" ] || options=("--family=${name#*/}")
    case $target in
    audio_file | coded_file) options+=(-close_fd_mask=3) ;; # says what is wrong with each file
    esac
    mkdir -p "$build/found/$name"
    folders=("$build/found/$name")
    [ ! -d "$corpus/$name" ] || folders+=("$corpus/$name")
    if ! "$build/bin/zspsc_fuzz_$target" "${options[@]}" -max_total_time="$seconds" -timeout=60 \
        -max_len=2048 -len_control=10 -artifact_prefix="$build/faults/${name//\//_}-" \
        -print_final_stats=1 "${folders[@]}" >"$log" 2>&1; then
        tail -40 "$log"
        echo "$name: the input is in $build/faults"
        return 1
    fi
    echo "$name: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs," \
        "$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2) edges"
}
export -f run_one

{
    "$build/bin/zspsc_fuzz_blocks" --families | sed 's,^,blocks/,'
    find "$build/bin" -name 'zspsc_fuzz_*' ! -name zspsc_fuzz_blocks -printf '%f\n' |
        sed 's/^zspsc_fuzz_//' | sort
} | xargs -P 2 -I NAME bash -c 'run_one NAME'
