#!/usr/bin/env bash
# Packs the libraries that build/windows installs into build/zspsc-VERSION-windows-x64.zip, and uses
# what comes out of the archive under Wine: a consumer's CMake project, with the DLLs and with the
# static libraries.
set -euo pipefail
cd "$(dirname "$0")/.."
name=zspsc-$(dpkg-parsechangelog -S Version)-windows-x64
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -S Timestamp)
export SOURCE_DATE_EPOCH
work=$PWD/build/windows-package
rm -rf "$work" "build/$name.zip"
mkdir -p "$work/trial"

cmake --install build/windows --strip --prefix "$work/$name" >/dev/null
find "$work/$name" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
(cd "$work" && find "$name" -type f | sort |
    TZ=UTC cmake -E tar cf "../$name.zip" --format=zip --files-from=/dev/stdin)

cd "$work/trial"
cmake -E tar xf "../../$name.zip"
prefix=$PWD/$name
wine=$work/../../cmake/wine.sh

echo "== A consumer of the archive"
# As a toolchain file of the consumer's own would be: the compiler alone.
cmake -S ../../../tests/package/consumer -B consumer -G Ninja -Dzspsc_DIR="$prefix/lib/cmake/zspsc" \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc-posix \
    -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix -DCMAKE_EXE_LINKER_FLAGS=-static >log
cmake --build consumer >>log || { cat log && false; }
for program in consumer/static_*.exe; do "$wine" "$program"; done
cp "$prefix"/bin/*.dll consumer
for program in consumer/shared_*.exe; do "$wine" "$program"; done

ls -l --block-size=KiB "../../$name.zip"
