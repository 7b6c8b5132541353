#!/usr/bin/env bash
# Builds the macOS bundle once more, from a copy of the sources in another place, and holds that it is
# the same byte for byte.
#
#     same_bytes.sh SOURCES BUNDLE SCRATCH_FOLDER
set -euo pipefail
sources=$1 bundle=$2 elsewhere=$3/a_place_with_another_name

rm -rf "$elsewhere"
mkdir -p "$elsewhere"
tar -C "$sources" --exclude=./build --exclude=./.git -c . | tar -C "$elsewhere" -x
cd "$elsewhere"
export CCACHE_DISABLE=1 # nothing that was compiled before
cmake --preset macos-i386 >/dev/null
cmake --build --preset macos-i386 --target Picture -- --quiet
cmp "$bundle" build/macos-i386/Picture.bundle
rm -rf "$elsewhere"
