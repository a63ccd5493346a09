#!/usr/bin/env bash
# Builds everything and runs all tests, then once more under the address and undefined-behaviour
# sanitizers. Installs missing Debian packages first.
set -euo pipefail
cd "$(dirname "$0")"

. cmake/packages.sh
install_packages "${library_packages[@]}" "${tool_packages[@]}" "${check_packages[@]}"

echo "== Format"
git ls-files '*.cpp' '*.hpp' '*.h' '*.c' | xargs clang-format --dry-run --Werror

echo "== Optimised build and tests"
cmake --workflow --preset release

echo "== Address and undefined-behaviour sanitizer"
cmake --workflow --preset asan

echo "All checks passed."
