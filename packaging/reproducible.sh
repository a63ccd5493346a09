#!/usr/bin/env bash
# Makes the Debian packages twice, in two directories of different length, and compares them byte by
# byte; the Windows libraries too when the cross compiler is installed.
set -euo pipefail
cd "$(dirname "$0")/.."
. cmake/packages.sh
install_packages "${library_packages[@]}" "${tool_packages[@]}" "${deb_packages[@]}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
first=$work/a second=$work/a-longer-name/b
mkdir -p "$first" "$second"
export CCACHE_DISABLE=1 # what is compiled only once is equal to itself

compare() { # files, by their paths in both directories
    local file
    for file in "$@"; do
        cmp "$first/$file" "$second/$file"
        echo "$(sha256sum <"$first/$file" | cut -c1-16)  ${file##*/}: equal"
    done
}

packaging/build.sh "$first"
packaging/build.sh "$second"
mapfile -t packages < <(cd "$first" && ls -- *.deb)
compare "${packages[@]}"

command -v x86_64-w64-mingw32-g++-posix >/dev/null || exit 0
for directory in "$first" "$second"; do
    git ls-files -z --cached --others --exclude-standard | xargs -0 cp --parents -t "$directory"
    (cd "$directory" && cmake --preset windows -DZSPSC_BUILD_TESTS=OFF -DZSPSC_BUILD_EXAMPLES=OFF \
        -DZSPSC_BUILD_TOOLS=OFF && cmake --build --preset windows) >"$work/log" 2>&1 ||
        { tail -n 40 "$work/log" && false; }
done
compare build/windows/bin/{zspsc,zspvoice,zspcore}.dll
