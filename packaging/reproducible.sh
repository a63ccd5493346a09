#!/usr/bin/env bash
# Builds the libraries twice, in two directories of different length, and compares them byte by
# byte; the Windows libraries too when the cross compiler is installed.
set -euo pipefail
source=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
only_libraries=(-DZSPSC_BUILD_TESTS=OFF -DZSPSC_BUILD_BENCH=OFF -DZSPSC_BUILD_EXAMPLES=OFF
    -DZSPSC_BUILD_TOOLS=OFF)

build() { # preset, copy of the source, files to compare
    git -C "$source" ls-files -z --cached --others --exclude-standard |
        (cd "$source" && xargs -0 cp --parents -t "$2")
    (cd "$2" && cmake --preset "$1" "${only_libraries[@]}" && cmake --build --preset "$1") \
        >"$work/log" 2>&1 || { cat "$work/log" && false; }
}

check() { # preset, files
    local preset=$1 first=$work/a second=$work/a-longer-name/b file
    shift
    rm -rf "$first" "$second"
    mkdir -p "$first" "$second"
    build "$preset" "$first"
    build "$preset" "$second"
    for file in "$@"; do
        cmp "$first/build/$preset/$file" "$second/build/$preset/$file"
        echo "$(sha256sum <"$first/build/$preset/$file" | cut -c1-16)  $file: equal"
    done
}

check release lib/libzspsc.so lib/libzspvoice.so lib/libzspcore.so # through their links
if command -v x86_64-w64-mingw32-g++-posix >/dev/null; then
    check windows bin/zspsc.dll bin/zspvoice.dll bin/zspcore.dll
fi
