#!/usr/bin/env bash
# Packs what build/windows installs into build/zspsc-VERSION-windows-x64.zip, and uses what comes out
# of the archive under Wine: a consumer's CMake project with the DLLs and with the archives, and the
# host, whose self-test compares the DLL's results with the reference vectors.
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

echo "== The host of the archive"
zsp=$prefix/bin/zsp.exe
"$wine" "$zsp" info
"$wine" "$zsp" selftest
cp ../../../data/speech_8k.wav .
"$wine" "$zsp" encode speech_8k.wav speech.g726
"$wine" "$zsp" decode speech.g726 speech.wav
"$wine" "$zsp" decode - --codec g726 - <speech.g726 >piped.wav
tail -c 1000 speech.wav | cmp - <(tail -c 1000 piped.wav) # nothing becomes CR LF
if "$wine" "$zsp" decode speech.g726 speech.g726 2>/dev/null; then
    echo "a file was read and written at once" >&2
    exit 1
fi
[ -z "$(find . -name '.zsp-*')" ] || { echo "temporary files stay behind" >&2; exit 1; }
native=../../release/bin/zsp
if [ -x $native ]; then
    $native encode speech_8k.wav native.g726
    cmp native.g726 speech.g726
    $native decode native.g726 native.wav
    cmp native.wav speech.wav
    echo "codes and decodes as the native host does"
fi
ls -l --block-size=KiB "../../$name.zip"
