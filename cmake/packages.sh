# What the scripts at the root need from Debian. Sourced, not run.

library_packages=(g++ cmake ninja-build pkg-config)
tool_packages=(libsamplerate0-dev libsndfile1-dev zlib1g-dev)
check_packages=(abigail-tools clang clang-format clang-tidy doxygen ffmpeg git ladspa-sdk libbenchmark-dev
    libclang-rt-dev libgtest-dev python3-matplotlib python3-numpy sox)
mutants_packages=(clang libclang-rt-dev python3)
coverage_packages=(gcovr)
deb_packages=(debhelper dh-python doxygen dpkg-dev ffmpeg file ladspa-sdk lintian man-db python3-numpy sox)
msan_packages=(googletest)
valgrind_packages=(valgrind)
windows_packages=(dpkg-dev g++-mingw-w64-x86-64-posix googletest libz-mingw-w64-dev llvm wine64)

# Installs those of the named packages that are missing; asks for root only when there are any.
install_packages() {
    local missing=() package
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" = "install ok installed" ] ||
            missing+=("$package")
    done
    [ "${#missing[@]}" -eq 0 ] && return
    if ! command -v apt-get >/dev/null; then
        echo "Not a Debian system: going on without looking for ${missing[*]}"
        return
    fi
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qq -y --no-install-recommends "${missing[@]}" >/dev/null
}
