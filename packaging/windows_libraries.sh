#!/usr/bin/env bash
# Builds what the host needs on Windows and Debian has no cross-built package of, from Debian's
# sources: libsndfile as a DLL (without FLAC, Vorbis and MP3), libsamplerate as an archive.
#   packaging/windows_libraries.sh PREFIX
set -euo pipefail
mkdir -p "$1"
prefix=$(cd "$1" && pwd)
toolchain=$(cd "$(dirname "$0")/.." && pwd)/cmake/mingw-w64.cmake
[ ! -f "$prefix/done" ] || exit 0

work=$prefix/work
rm -rf "$work"
mkdir -p "$work/lists/partial"
cd "$work"
# The sources of the packages that this machine installs, without touching how it is set up.
sed 's/^Types: deb.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >debian.sources
apt=(apt-get -qq -o "Dir::Etc::sourcelist=$work/debian.sources" -o Dir::Etc::sourceparts=-
    -o "Dir::State::lists=$work/lists" -o APT::Sandbox::User=root)
"${apt[@]}" update
"${apt[@]}" source libsndfile libsamplerate >log 2>&1 || { cat log && false; }

build() { # source, options
    local source=$1
    shift
    { cmake -S "$source" -B "$source-build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_TESTING=OFF "$@" &&
        cmake --build "$source-build" && cmake --install "$source-build" --strip; } >>log 2>&1 ||
        { tail -n 40 log && false; }
}
build "$(echo libsamplerate-*)" -DBUILD_SHARED_LIBS=OFF -DLIBSAMPLERATE_EXAMPLES=OFF
build "$(echo libsndfile-*)" -DBUILD_SHARED_LIBS=ON -DENABLE_EXTERNAL_LIBS=OFF -DENABLE_MPEG=OFF \
    -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DENABLE_CPACK=OFF -DINSTALL_MANPAGES=OFF
cp libsndfile-*/COPYING "$prefix/libsndfile-COPYING"
cp libsamplerate-*/COPYING "$prefix/libsamplerate-COPYING"
cd "$prefix"
rm -rf work
touch done
