#!/usr/bin/env bash
# Prints the command that runs cbmc, version 6. Where this Debian has no such package, that of the
# release after it is unpacked into the folder WORK, with the libraries that it wants; nothing is
# installed.
#
#   proofs/find_cbmc.sh WORK
set -euo pipefail
work=$1
release=trixie

if command -v cbmc >/dev/null && [[ $(cbmc --version) == 6.* ]]; then
    command -v cbmc
    exit
fi
if [ ! -x "$work/cbmc" ]; then
    root=$work/root apt=$work/apt
    mkdir -p "$root" "$apt/lists/partial" "$apt/cache/archives/partial" "$apt/packages"
    archive=$(apt-get indextargets --format '$(REPO_URI)' | grep -E '/debian/?$' | head -1)
    echo "deb $archive $release main" >"$apt/sources.list"
    options=(-qq -o "Dir::Etc::SourceList=$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o "Dir::State::Lists=$apt/lists" -o "Dir::Cache=$apt/cache" -o APT::Sandbox::User=root
        -o Dir::State::status=/dev/null)
    apt-get "${options[@]}" update >&2
    (cd "$apt/packages" && apt-get "${options[@]}" download \
        cbmc minisat libc6 libgcc-s1 libstdc++6 zlib1g >&2)
    for package in "$apt"/packages/*.deb; do
        dpkg -x "$package" "$root"
    done
    cat >"$work/cbmc" <<EOF
#!/bin/sh
exec "$root/usr/lib64/ld-linux-x86-64.so.2" \\
    --library-path "$root/usr/lib/x86_64-linux-gnu:$root/usr/lib" "$root/usr/bin/cbmc" "\$@"
EOF
    chmod +x "$work/cbmc"
fi
echo "$work/cbmc"
