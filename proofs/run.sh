#!/usr/bin/env bash
# Proves for all inputs what the sources of this folder claim, or those that are named:
#
#   proofs/run.sh [g726 ...]
#
# clang makes intermediate code of a source, which includes the library's own, with a check before
# whatever could be undefined; translate/to_c.py makes C of that; cbmc proves each claim and that no
# check fails. Before that the C runs with random values, as does the source itself, alike.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
work=$PWD/build/proofs
mkdir -p "$work"
cbmc=$(proofs/find_cbmc.sh "$work")
export cbmc work

# An array's or a span's index, a sum, a shift, a division, an assertion.
checks=(-fsanitize=signed-integer-overflow,shift,bounds,integer-divide-by-zero,unreachable,return
    -fsanitize-trap=all -D_GLIBCXX_ASSERTIONS -UNDEBUG)
options=(-std=c++20 -march=x86-64-v3 -fno-exceptions -fno-rtti -ffp-contract=off
    -I. -Iinclude -Icompanion/include)

translate() {
    local folder=$work/$1
    mkdir -p "$folder"
    clang++ "${options[@]}" "${checks[@]}" -O1 -fno-vectorize -fno-slp-vectorize -fno-unroll-loops \
        -fno-discard-value-names -S -emit-llvm "proofs/$1.cpp" -o "$folder/proof.ll"
    python3 -B proofs/translate/to_c.py "$folder/proof.ll" >"$folder/proof.c"
    sed -nE 's/^void prove_(\w+)\(void\).*/PROOF(\1)/p' "$folder/proof.c" >"$folder/proofs.list"
    [ -s "$folder/proofs.list" ]
}

run_with_random_values() {
    local folder=$work/$1
    gcc -O1 -c -I"$folder" proofs/random_run.c -o "$folder/random_run.o"
    gcc -O1 -w -I. "$folder/proof.c" "$folder/random_run.o" -o "$folder/translated"
    g++ "${options[@]}" -O2 -UNDEBUG -ffunction-sections -Wl,--gc-sections "proofs/$1.cpp" \
        "$folder/random_run.o" -o "$folder/native"
    "$folder/translated" >"$folder/translated.log"
    "$folder/native" >"$folder/native.log"
    diff "$folder/translated.log" "$folder/native.log" ||
        { echo "$1: the C and the library differ" >&2; return 1; }
}

# One claim must fail, that the end of a proof is not reached.
prove() {
    local source=$1 proof=$2 log=$work/$1/$2.log started=$SECONDS
    # shellcheck disable=SC2046 # several options
    timeout 120 "$cbmc" "$work/$source/proof.c" -I . --function "prove_$proof" \
        $(sed -nE 's,^// cbmc: ,,p' "proofs/$source.cpp") --drop-unused-functions \
        --no-standard-checks --pointer-check --bounds-check --unwinding-assertions \
        >"$log" 2>&1 || true
    local claims failures
    claims=$(grep -cE ': SUCCESS$' "$log" || true)
    failures=$(grep -E ': (FAILURE|UNKNOWN|ERROR)$' "$log" || true)
    if [ "$claims" -gt 0 ] && [[ $failures == *"the end is reached: FAILURE" ]] &&
        [ "$(wc -l <<<"$failures")" -eq 1 ]; then
        printf '%-28s proved, %4d claims, %3d s\n' "$proof" "$claims" $((SECONDS - started))
    else
        printf '%-28s NOT PROVED, see %s\n%s\n' "$proof" "$log" "$failures"
        return 1
    fi
}
export -f prove

sources=("$@")
[ "$#" -gt 0 ] || mapfile -t sources < <(basename -s .cpp proofs/*.cpp)
for source in "${sources[@]}"; do
    translate "$source"
    run_with_random_values "$source"
done
for source in "${sources[@]}"; do
    sed -E "s/PROOF\((.*)\)/$source \1/" "$work/$source/proofs.list"
done | xargs -P "$(nproc)" -L 1 bash -c 'prove "$0" "$1"'
