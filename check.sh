#!/usr/bin/env bash
# Checks the format, builds everything with optimisation, runs all tests, repeats them as clang
# builds them with the address and undefined-behaviour sanitizers, and runs clang-tidy over libraries
# and host. Installs missing Debian packages first.
#
#   ./check.sh                          format, headers, release, asan and tidy
#   ./check.sh CHECK...                 one or some of these, or of what takes more packages:
#
#     analyze      as tidy, with the analyzer at its full depth
#     clang        the tests as clang optimises
#     tsan         the tests under the thread sanitizer
#     proofs       what proofs/ claims, for all inputs (cbmc)
#     fuzz         100 million random calls under the address sanitizer, and every fuzzer a minute
#     mutants      the kernels changed in one place at a time: the tests must notice
#     coverage     lines and branches of the libraries that the tests run through
#     msan         libraries, their tests and random calls under the memory sanitizer
#     valgrind     the tests as built for users, under Valgrind's memory checker
#     windows      cross-build with mingw-w64, all tests under Wine; build/zspsc-*-windows-x64.zip
#     packages     Debian packages: lintian, install, use, remove (as root)
#     reproducible two builds of packages and DLLs in different directories, equal byte by byte
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

. cmake/packages.sh
install_packages "${library_packages[@]}" "${tool_packages[@]}" "${check_packages[@]}"

# Layout, and a first line that begins to say what the file is for.
check_format() {
    git ls-files '*.cpp' '*.hpp' '*.h' '*.c' |
        xargs -P "$(nproc)" -n 20 clang-format --dry-run --Werror
    git ls-files '*.cpp' '*.hpp' | xargs awk '
        FNR == 1 && !/^\/[\/*]/ { print FILENAME ": no opening comment"; bad = 1 }
        END { exit bad }'
}

# The public headers, together and one by one, against every warning that clang has but one: it
# takes Doxygen's lists of parameters, "src1, src2", for the name of one.
check_headers() {
    local header standard language faults=0
    for header in include/*.h include/*/*.h include/*/*/*.h companion/include/*.h; do
        for standard in c99 c11 c++11 c++20; do
            language=${standard%%[0-9]*}
            echo "#include \"${header##*include/}\"" |
                clang -x "$language" -std="$standard" -Weverything -Wno-documentation -Werror \
                    -Iinclude -Icompanion/include -fsyntax-only - || faults=1
        done
    done
    return "$faults"
}

check_release() {
    cmake --workflow --preset release
}

check_asan() {
    cmake --workflow --preset asan
}

# As clang builds it, with assertions, which tell the analyzer what a kernel relies on. Findings are
# on its standard output. On the other one it counts warnings in headers of others; only when it
# fails does that count, since then it may say why.
tidy_one() { # file, what the analyzer is told
    local said
    { said=$(clang-tidy --quiet -p build/asan --extra-arg=-UNDEBUG \
        --extra-arg=-Wno-unknown-warning-option --extra-arg=-Xclang \
        --extra-arg=-analyzer-config --extra-arg=-Xclang --extra-arg="$2" "$1" 2>&1 >&3); } 3>&1 &&
        return
    printf '%s: %s\n' "$1" "$said" >&2
    return 1
}

tidy_all() { # what the analyzer is told
    [ -f build/asan/compile_commands.json ] || cmake --preset asan
    export -f tidy_one
    git ls-files {alc,codecs,common,companion,conformance,core,ec,signals,tools,voice}/'*.cpp' \
        ':!*windows.cpp' |
        xargs -P "$(nproc)" -I{} bash -c "tidy_one {} $1"
}

# The analyzer follows calls and loops less far here, which takes a fifth of its time.
check_tidy() {
    tidy_all mode=shallow
}

check_analyze() {
    tidy_all mode=deep
}

check_clang() {
    cmake --workflow --preset clang
}

check_tsan() {
    cmake --workflow --preset tsan
}

check_proofs() {
    install_packages clang gcc python3
    proofs/run.sh
}

# Ten million calls for each of ten seeds, then a minute for each of clang's fuzzers.
check_fuzz() {
    cmake --preset asan
    cmake --build --preset asan --target zspsc_random_caller
    seq 101 110 | xargs -P "$(nproc)" -I SEED \
        build/asan/bin/zspsc_random_caller --calls 10000000 --seed SEED
    cmake --preset fuzz
    cmake --build --preset fuzz --target zspsc_fuzzers
    tests/fuzz/run_fuzzers.sh build/fuzz 60
}

check_mutants() {
    install_packages "${mutants_packages[@]}"
    tests/mutants/mutants.py
}

# Where the list of exports is expanded, a line stands for all of them.
check_coverage() {
    install_packages "${coverage_packages[@]}"
    cmake --preset coverage
    cmake --build --preset coverage --target zspsc_test zspvoice_test
    find build/coverage -name '*.gcda' -delete
    build/coverage/bin/zspsc_test --gtest_brief=1 --gtest_filter=-'*Exhaustively*'
    build/coverage/bin/zspvoice_test --gtest_brief=1
    gcovr --object-directory build/coverage --filter '(alc|codecs|common|companion|core|ec|voice)/' \
        --exclude core/dispatch.cpp --exclude core/leaving.hpp --exclude core/entries.hpp \
        --exclude-throw-branches --exclude-unreachable-branches --sort-uncovered \
        --fail-under-line 99 --fail-under-branch 95 build/coverage
}

# The libraries and all that calls them directly, but not the host, which reads files through
# libraries of others: what those write would count as unwritten.
check_msan() {
    install_packages "${msan_packages[@]}"
    cmake --preset msan
    cmake --build --preset msan --target zspsc_random_caller
    build/msan/bin/zspsc_random_caller --calls 1000000 --seed 4
    cmake --workflow --preset msan
}

# One of four parts of a program's tests. What is left out: pairs of all words and the longest sums,
# which touch no memory; a look at processor state that Valgrind does not carry along; how much
# memory the host takes. Programs of others that the host's tests start are not looked at.
valgrind_one() {
    local program=${1% *} part=${1#* } log=build/release/valgrind/${1// /_}.log
    local skip='*FixedPoint.WordPairsExhaustively:*FixedPoint.LongsAgainstWideArithmetic'
    skip+=':CheckedCall.FindsWhatIsLeftBehind:*MemoryDoesNotGrowWithTheLengthOfTheFiles'
    if ! GTEST_TOTAL_SHARDS=4 GTEST_SHARD_INDEX=$part valgrind -q --error-exitcode=99 \
        --leak-check=full --errors-for-leak-kinds=definite --num-callers=30 --trace-children=yes \
        --trace-children-skip='*/sox,*/play,*/ff*,*/gst-*,*/python*,*/man,*/groff,*/cc,*/cmake' \
        "build/release/bin/$program" --gtest_filter="-$skip" >"$log" 2>&1; then
        grep -E '^==[0-9]+==|FAILED|Failure' "$log" | head -60
        echo "$1: see $log"
        return 1
    fi
    echo "$1: $(grep -c '       OK ' "$log") tests"
}

check_valgrind() {
    install_packages "${valgrind_packages[@]}"
    cmake --preset release
    cmake --build --preset release
    mkdir -p build/release/valgrind
    export -f valgrind_one
    for program in zspvoice_test zspsc_test zspsc_host_test; do
        printf '%s\n' "$program "{0..3}
    done | xargs -P "$(nproc)" -I{} bash -c 'valgrind_one "{}"'
    valgrind -q --error-exitcode=99 build/release/bin/zspsc_random_caller --calls 20000 --seed 3
}

check_windows() {
    install_packages "${windows_packages[@]}"
    packaging/windows_libraries.sh build/windows-libraries
    cmake --workflow --preset windows
    packaging/windows.sh
}

check_packages() {
    packaging/check.sh
}

check_reproducible() {
    packaging/reproducible.sh
}

[ "$#" -gt 0 ] || set -- format headers release asan tidy
for check in "$@"; do
    echo "== $check"
    SECONDS=0
    "check_$check"
    echo "== $check passed in $SECONDS s"
done
