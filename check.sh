#!/usr/bin/env bash
# Checks the format, builds everything with optimisation, runs all tests, repeats them under the
# address and undefined-behaviour sanitizers, and runs clang-tidy over library and host. Installs
# missing Debian packages first.
#
#   ./check.sh                          format, release, asan and tidy
#   ./check.sh CHECK...                 one or some of these, or of what takes more packages:
#
#     tsan         the tests under the thread sanitizer
#     windows      cross-build with mingw-w64, all tests under Wine
#     packages     Debian packages: lintian, install, use, remove (as root)
#     reproducible two builds in different directories, compared byte by byte
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

. cmake/packages.sh
install_packages "${library_packages[@]}" "${tool_packages[@]}" "${check_packages[@]}"

# Layout, and a first line that begins to say what the file is for.
check_format() {
    git ls-files '*.cpp' '*.hpp' '*.h' '*.c' | xargs clang-format --dry-run --Werror
    git ls-files '*.cpp' '*.hpp' ':!tools' | xargs awk '
        FNR == 1 && !/^\/[\/*]/ { print FILENAME ": no opening comment"; bad = 1 }
        END { exit bad }'
}

check_release() {
    cmake --workflow --preset release
}

check_asan() {
    cmake --workflow --preset asan
}

# With assertions, which tell the analyzer what a kernel relies on. What it prints about headers of
# others is not ours, so only findings are shown.
check_tidy() {
    [ -f build/release/compile_commands.json ] || cmake --preset release
    git ls-files {alc,codecs,common,companion,core,ec,signals,tools}/'*.cpp' |
        xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/release \
            --extra-arg=-UNDEBUG --extra-arg=-Wno-unknown-warning-option 2>/dev/null
}

check_tsan() {
    cmake --workflow --preset tsan
}

check_windows() {
    install_packages "${windows_packages[@]}"
    cmake --workflow --preset windows
}

check_packages() {
    packaging/check.sh
}

check_reproducible() {
    packaging/reproducible.sh
}

[ "$#" -gt 0 ] || set -- format release asan tidy
for check in "$@"; do
    echo "== $check"
    SECONDS=0
    "check_$check"
    echo "== $check passed in $SECONDS s"
done
